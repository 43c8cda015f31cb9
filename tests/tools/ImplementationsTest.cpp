// The product, its host call, the plain commands that it prints, and the script that shares no code
// with it say the same of the same recordings.

#include <gtest/gtest.h>

#include <algorithm>

#include "support/Bytes.h"
#include "support/Scratch.h"
#include "tools/Shell.h"

namespace {

using corvo_test::Le32;
using corvo_test::MakeDirectory;
using corvo_test::ReadFile;
using corvo_test::Shell;
using corvo_test::With;
using corvo_test::WriteFile;

constexpr std::size_t kHeaderSize = 3170;

// Recordings made from a sealed one: whole ones, ones with a change in any field, ones whose chunks
// stand in other orders or lie about their sizes, and pieces.
class Corpus {
 public:
  Corpus(const Shell& shell, const std::string& sealed) : m_shell(shell), m_sealed(sealed) {
    MakeDirectory(shell.Path("corpus"));
    AddFieldChanges();
    AddOrders();
    AddSizes();
    AddPieces();
  }

  int Size() const { return m_count; }

 private:
  void Add(const std::string& bytes) {
    WriteFile(m_shell.Path("corpus/" + std::to_string(1000 + m_count++) + ".wav"), bytes);
  }

  void AddFieldChanges() {
    for (std::size_t at = 0; at < m_sealed.size(); at += at >= 400 && at < 3140 ? 137 : 3) {
      Add(With(m_sealed, at, {static_cast<char>(m_sealed[at] ^ 1)}));
    }
  }

  // "eyre", "fmt ", record, "fact" and "data" behind each other in every order.
  void AddOrders() {
    const std::string chunks[] = {m_sealed.substr(12, 16), m_sealed.substr(28, 24),
                                  m_sealed.substr(52, 3098), m_sealed.substr(3150, 12),
                                  m_sealed.substr(3162)};
    int order[] = {0, 1, 2, 3, 4};
    do {
      std::string file = m_sealed.substr(0, 12) + "junk" + Le32(3) + "odd";
      for (const int i : order) file += chunks[i];
      Add(file);
    } while (std::next_permutation(std::begin(order), std::end(order)));
  }

  void AddSizes() {
    for (const std::size_t at : {4u, 16u, 32u, 56u, 3154u, 3166u}) {
      for (const std::size_t size : {0u, 1u, 4u, 7u, 15u, 16u, 18u, 39u, 41u, 269u, 3089u, 3091u,
                                     0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        Add(With(m_sealed, at, Le32(size)));
      }
    }
    // What a longer "eyre" or "fact" chunk holds behind its value is read as chunks.
    for (const std::size_t at : {28u, 3162u}) {
      std::string file = m_sealed;
      file.insert(at, "more" + Le32(2) + "xx");
      Add(With(file, at == 28 ? 16 : 3154, Le32(at == 28 ? 18 : 14)));
    }
  }

  void AddPieces() {
    for (const std::size_t length :
         {0u, 3u, 11u, 12u, 19u, 28u, 40u, 52u, 60u, 300u, 322u, 3149u, 3158u, 3169u}) {
      Add(m_sealed.substr(0, length));
    }
    for (std::size_t length = kHeaderSize; length <= m_sealed.size(); ++length) {
      Add(m_sealed.substr(0, length));
    }
    Add(m_sealed + "behind");
    Add("");
    WriteFile(m_shell.Path("corpus/n\u00e9\u0085\xff.wav"), m_sealed);
    ++m_count;
  }

  const Shell& m_shell;
  std::string m_sealed;
  int m_count = 0;
};

TEST(CorvoImplementations, AgreeOnEveryRecording) {
  const Shell shell("corpus");
  const Corpus corpus(shell, shell.MakeSealed());
  ASSERT_GT(corpus.Size(), 400);

  shell.Run("corvo verify corpus | sed '$d' >ours");
  const std::string ours = ReadFile(shell.Path("ours"));
  EXPECT_EQ(std::count(ours.begin(), ours.end(), '\n'), corpus.Size());
  EXPECT_EQ(shell
                .Run("for word in OK broken malformed unsealed; do"
                     " grep -q $word ours || echo no $word; done")
                .output,
            "");

  // It doesn't tell broken from malformed.
  EXPECT_EQ(shell
                .Run("corvo verify --through-host-call corpus | sed '$d' | grep OK >host;"
                     " grep OK ours | cmp - host")
                .output,
            "");
  // A fifth of them, since each takes some ten processes. Only what has a seal to recompute has a
  // recipe; its script says whether it is intact.
  EXPECT_EQ(
      shell
          .Run("for f in corpus/*[05].wav; do corvo recipe $f 2>/dev/null >script &&"
               " if sh script >said; then echo $f: OK; else echo $f: FAILED; fi; done >recipes;"
               " grep -E '[05].wav: (OK|.*broken)' ours | sed 's/ (.*//' | diff - recipes")
          .output,
      "");

  if (shell.Run("command -v python3").exitCode != 0) GTEST_SKIP() << "no python3 here";
  EXPECT_EQ(shell
                .Run("python3 '" CORVO_SAMPLES
                     "/../examples/verify_seal.py' corpus/* >theirs; diff ours theirs")
                .output,
            "");
}

}  // namespace

// The product, its host call, the plain commands that it prints, and the script that shares no code
// with it say the same of the same recordings.

#include <algorithm>

#include "tools/ShellTest.h"

namespace corvo_test {
namespace {

constexpr std::size_t kHeaderSize = 3170;

// Recordings made from a sealed one: whole ones, ones with a change in any field, ones whose chunks
// stand in other orders or lie about their sizes, and pieces.
class CorvoImplementations : public ShellTest {
 protected:
  CorvoImplementations() : m_sealed(MakeSealed()) {
    AddFieldChanges();
    AddOrders();
    AddSizes();
    AddPieces();
  }

  void Add(const std::string& bytes) {
    Write("corpus/" + std::to_string(1000 + m_count++) + ".wav", bytes);
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
    Write("corpus/n\u00e9\u0085\xff.wav", m_sealed);
    ++m_count;
  }

  const std::string m_sealed;
  int m_count = 0;
};

TEST_F(CorvoImplementations, AgreeOnEveryRecording) {
  ASSERT_GT(m_count, 400);
  Run("corvo verify corpus | sed '$d' >ours");
  Walk({{"wc -l <ours", 0, std::to_string(m_count) + "\n"},
        {"for word in OK broken malformed unsealed; do grep -q $word ours || echo $word; done", 0,
         ""},
        // It doesn't tell broken from malformed.
        {"corvo verify --through-host-call corpus | sed '$d' | grep OK >host; grep OK ours |"
         " cmp - host",
         0, ""},
        // A fifth of them, since each takes some ten processes. Only what has a seal to recompute
        // has a recipe; its script says whether it is intact.
        {"for f in corpus/*[05].wav; do corvo recipe $f 2>/dev/null >script &&"
         " if sh script >said; then echo $f: OK; else echo $f: FAILED; fi; done >recipes;"
         " grep -E '[05].wav: (OK|.*broken)' ours | sed 's/ (.*//' | diff - recipes",
         0, ""}});
  if (!Has("python3")) GTEST_SKIP() << "no python3 here";
  Walk(
      {{"python3 '" CORVO_SAMPLES "/../examples/verify_seal.py' corpus/* >theirs; diff ours theirs",
        0, ""}});
}

}  // namespace
}  // namespace corvo_test

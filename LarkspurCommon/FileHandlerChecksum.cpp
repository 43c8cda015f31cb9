// The checksums of a whole file, read block by block with pauses for the other threads.

#include <boost/crc.hpp>
#include <memory>
#include <new>

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerBoundary.h"
#include "LarkspurCommon/Pacing.h"
#include "LarkspurCommon/md5.h"

using namespace file_layer;

namespace {

constexpr char kGenerateCrc[] = "void TFileHandler::GenerateCRC(SQLUINTEGER&)";
constexpr char kGenerateHash[] = "void TFileHandler::GenerateHash(SQLUINTEGER&)";

constexpr DWORD kBlockSize = 16384;
static_assert(kBlockSize <= 0xFFFF, "MD5Update takes a block at once");

constexpr DWORD kWorkTime = 2;  // milliseconds
constexpr DWORD kPause = 10;    // milliseconds

constexpr boost::uint32_t kInitialRemainder = 0xFFFFFFFF;
constexpr std::size_t kDigestSize = 16;

// Gives `feed` the rest of the file, whatever its newline mode. Without memory, nothing.
template <class Feed>
void FeedBlocks(TFileHandler& file, unsigned long& clock, Feed feed) {
  const std::unique_ptr<unsigned char[]> block(new (std::nothrow) unsigned char[kBlockSize]);
  if (block == nullptr || !file.GetIsOpen()) return;
  DWORD size;
  while (file.CachedRead(block.get(), kBlockSize, &size) && !file.EndOfFile()) {
    feed(block.get(), size);
    PauseWhenDue(clock, kWorkTime, kPause);
  }
}

tstring HexText(const unsigned char (&digest)[kDigestSize]) {
  tstring text;
  for (const unsigned char byte : digest) {
    text += NumToHex(static_cast<unsigned char>(byte >> 4));
    text += NumToHex(byte & 0xF);
  }
  return text;
}

// Gives `feed` the whole file, or what comes before a failure, and goes back to where the reader
// was.
template <class Feed>
void FeedFile(TFileHandler& file, const char* label, unsigned long& clock, Feed feed) {
  const DWORD position = file.GetFilePosition();
  file.MoveToPosition(0, 0);
  AtBoundary(label, __LINE__, [&] { FeedBlocks(file, clock, feed); });
  file.MoveToPosition(0, static_cast<LONG>(position));
}

}  // namespace

const char* TFileHandler::GetCRC(unsigned long& clock) {
  if (m_crc.empty()) GenerateCRC(clock);
  return m_crc.c_str();
}

const char* TFileHandler::GetHash(unsigned long& clock) {
  if (m_hash.empty()) GenerateHash(clock);
  return m_hash.c_str();
}

void TFileHandler::GenerateCRC(unsigned long& clock) {
  AtBoundary(kGenerateCrc, __LINE__, [&] {
    boost::crc_32_type crc(kInitialRemainder);
    FeedFile(*this, kGenerateCrc, clock,
             [&](const unsigned char* block, DWORD size) { crc.process_bytes(block, size); });
    m_crc.Format("%08x", static_cast<unsigned int>(crc.checksum()));
  });
}

void TFileHandler::GenerateHash(unsigned long& clock) {
  AtBoundary(kGenerateHash, __LINE__, [&] {
    MD5_CTX context;
    MD5Init(&context);
    FeedFile(*this, kGenerateHash, clock, [&](unsigned char* block, DWORD size) {
      MD5Update(&context, block, static_cast<std::uint16_t>(size));
    });
    unsigned char digest[kDigestSize];
    MD5Final(digest, &context);
    m_hash = HexText(digest);
  });
}

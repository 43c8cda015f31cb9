// The limit that sealing and verifying are held against: the system calls that they make, and
// libcrypto's digest, with nothing around them; see SealTimes.h. What it seals is what the library
// seals, byte for byte. It takes recordings in the layout of sealed ones and looks at nothing else.

#define _TIME_BITS 64  // a clock that works after 2038, as ours does

#include <dirent.h>
#include <fcntl.h>
#include <openssl/sha.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "bench/SealTimes.h"

namespace {

constexpr std::size_t kHeader = 3170;
constexpr std::size_t kStep = 1000;
constexpr std::size_t kCache = 16384;
constexpr std::size_t kDigestBlock = 8192;
constexpr std::size_t kDigestSize = 20;

constexpr std::size_t kEyre = 20;  // where things stand in the header
constexpr std::size_t kFlag = 298;
constexpr std::size_t kDigest = 302;
constexpr std::size_t kSealEnd = 382;
constexpr std::size_t kDuration = 810;
constexpr std::size_t kDataSize = 3166;

std::string s_directory;
unsigned s_pauses = 0;

long Checked(long result) {
  if (result < 0) {
    std::perror("seal_floor");
    std::exit(1);
  }
  return result;
}

std::uint32_t Milliseconds() {
  timeval now;
  gettimeofday(&now, nullptr);
  return static_cast<std::uint32_t>(now.tv_sec) * 1000U +
         static_cast<std::uint32_t>(now.tv_usec) / 1000U;
}

void PauseWhenDue(std::uint32_t& clock) {
  if (Milliseconds() - clock < 10) return;
  ++s_pauses;
  const timespec pause{0, 50'000'000};
  nanosleep(&pause, nullptr);
  clock = Milliseconds();
}

bool Exists(const std::string& path) {
  return faccessat(AT_FDCWD, path.c_str(), F_OK, AT_EACCESS) == 0;
}

struct statx Status(int file, const char* path = "") {
  struct statx status;
  Checked(statx(file, path, *path == '\0' ? AT_EMPTY_PATH : 0, STATX_BASIC_STATS, &status));
  return status;
}

// A file as the file layer opens and positions it.
class File {
 public:
  File(const std::string& path, int flags) {
    umask(2);
    m_descriptor = static_cast<int>(Checked(open(path.c_str(), flags | O_CLOEXEC, 0664)));
    Status(m_descriptor);
  }
  ~File() { Close(); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  int Descriptor() const { return m_descriptor; }

  void Close() {
    if (m_descriptor >= 0) close(m_descriptor);
    m_descriptor = -1;
  }

  void Flush() { Checked(fsync(m_descriptor)); }

  void MoveTo(off_t position) {
    Flush();
    lseek(m_descriptor, 0, SEEK_CUR);
    lseek(m_descriptor, position, SEEK_SET);
    m_next = m_held = 0;
  }

  // `size` bytes or what is left of the file.
  std::size_t Read(unsigned char* out, std::size_t size) {
    std::size_t done = std::min(size, m_held - m_next);
    Take(out, done);
    if (done == size) return done;
    m_next = 0;
    m_held = static_cast<std::size_t>(Checked(read(m_descriptor, m_cache, sizeof m_cache)));
    const std::size_t more = std::min(size - done, m_held);
    Take(out + done, more);
    return done + more;
  }

  void Write(const unsigned char* bytes, std::size_t size) {
    if (Checked(write(m_descriptor, bytes, size)) != static_cast<long>(size)) std::exit(1);
  }

 private:
  void Take(unsigned char* out, std::size_t size) {
    std::copy_n(m_cache + m_next, size, out);
    m_next += size;
  }

  int m_descriptor;
  alignas(64) unsigned char m_cache[kCache];
  std::size_t m_next = 0;
  std::size_t m_held = 0;
};

bool ReadDirectory(const std::string& path) {
  DIR* const directory = opendir(path.c_str());
  if (directory == nullptr) return false;
  while (readdir(directory) != nullptr) continue;
  return closedir(directory) == 0;
}

// A look for a name in any letter case where there is none.
void LookForName(const std::string& path) {
  Exists(path);
  for (std::size_t end = path.find('/', 1); end != path.npos; end = path.find('/', end + 1)) {
    Exists(path.substr(0, end));
  }
  Exists(path);
  ReadDirectory(path.substr(0, path.rfind('/') + 1));
}

std::string TemporaryName() {
  std::uint32_t words[4];
  Checked(getrandom(words, sizeof words, 0));
  char name[64];
  std::snprintf(name, sizeof name, "QRT%08x%08x%08x%08x.tmp", words[0], words[1], words[2],
                words[3]);
  return s_directory + "/tempfiles/" + name;
}

void CopyOwnerAndMode(const std::string& from, const std::string& to) {
  Exists(from);
  const struct statx status = Status(AT_FDCWD, from.c_str());
  Exists(to);
  const int file = static_cast<int>(Checked(open(to.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)));
  Checked(fchmod(file, status.stx_mode & 07777));
  Checked(fchown(file, status.stx_uid, status.stx_gid));
  close(file);
}

void FlushDirectory(const std::string& path) {
  Exists(path);
  const int file = static_cast<int>(Checked(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)));
  fsync(file);
  close(file);
}

void WriteHeader(File& file, const unsigned char* header) {
  file.MoveTo(0);
  lseek(file.Descriptor(), 0, SEEK_CUR);
  file.Write(header, kHeader);
}

void WriteCopy(File& temporary, File& recording, std::size_t audio, std::uint32_t& clock) {
  unsigned char step[kStep];
  while (audio > 0) {
    const std::size_t count = std::min(audio, kStep);
    if (recording.Read(step, count) != count) std::exit(1);
    temporary.Write(step, count);
    PauseWhenDue(clock);
    audio -= count;
  }
  Status(temporary.Descriptor());
}

void ReadDigest(File& temporary, unsigned char* digest) {
  SHA_CTX context;
  SHA1_Init(&context);
  temporary.MoveTo(0);
  unsigned char block[kDigestBlock];
  while (const std::size_t count = temporary.Read(block, sizeof block)) {
    SHA1_Update(&context, block, count);
  }
  SHA1_Final(digest, &context);
}

// Leaves the recording at its audio.
void ReadHeader(File& recording, unsigned char* header) {
  recording.MoveTo(0);
  recording.Read(header, kHeader);
}

std::size_t AudioBytes(const unsigned char* header) {
  std::uint32_t size;
  std::memcpy(&size, header + kDataSize, sizeof size);
  return size;
}

void ClearSeal(unsigned char* header) {
  std::fill(header + kEyre, header + kEyre + 8, 0);
  std::fill(header + kFlag, header + kSealEnd, 0);
}

// The header as it is digested, and how much audio there is.
void BeginCopy(File& recording, unsigned char* header) {
  ReadHeader(recording, header);
  Status(recording.Descriptor());
  recording.Flush();
  lseek(recording.Descriptor(), 0, SEEK_CUR);
  lseek(recording.Descriptor(), 0, SEEK_CUR);
  ClearSeal(header);
}

bool Seal(const char* path) {
  const std::string name = TemporaryName();
  const std::string directory = s_directory + "/tempfiles/";
  const std::string home(path, std::string(path).rfind('/') + 1);
  std::uint32_t clock = Milliseconds();
  unsigned char header[kHeader];

  Exists(path);
  File recording(path, O_RDONLY);
  Status(recording.Descriptor());
  ReadHeader(recording, header);
  LookForName(name);
  LookForName(name);
  File temporary(name, O_RDWR | O_CREAT | O_EXCL);
  CopyOwnerAndMode(path, name);
  BeginCopy(recording, header);
  std::copy_n(kCallDuration, sizeof kCallDuration, header + kDuration);
  WriteHeader(temporary, header);
  WriteCopy(temporary, recording, AudioBytes(header), clock);
  ReadDigest(temporary, header + kDigest);
  header[kFlag] = 1;
  for (unsigned i = 0; i < 8; ++i) {
    header[kEyre + i] = static_cast<unsigned char>(kStart >> 8 * i);
  }
  WriteHeader(temporary, header);
  Status(temporary.Descriptor());
  temporary.Flush();
  FlushDirectory(directory);

  Status(recording.Descriptor());
  Exists(path);
  Status(AT_FDCWD, path);
  temporary.Close();
  recording.Close();
  Exists(path);
  Status(AT_FDCWD, path);
  Checked(unlink(path));
  Exists(name);
  Exists(home);
  Checked(renameat2(AT_FDCWD, name.c_str(), AT_FDCWD, path, RENAME_NOREPLACE));
  FlushDirectory(home);
  return true;
}

bool Verify(const char* path) {
  std::uint32_t clock = Milliseconds();
  unsigned char header[kHeader];
  unsigned char stored[kDigestSize];
  unsigned char digest[kDigestSize];

  Exists(path);
  {
    File recording(path, O_RDONLY);
    ReadHeader(recording, header);
  }
  Exists(path);
  File recording(path, O_RDONLY);
  Status(recording.Descriptor());
  ReadHeader(recording, header);
  const std::string name = TemporaryName();
  LookForName(name);
  LookForName(name);
  File temporary(name, O_RDWR | O_CREAT | O_EXCL);
  CopyOwnerAndMode(path, name);
  std::copy_n(header + kDigest, kDigestSize, stored);
  BeginCopy(recording, header);
  WriteHeader(temporary, header);
  WriteCopy(temporary, recording, AudioBytes(header), clock);
  ReadDigest(temporary, digest);
  temporary.Close();
  Exists(name);
  Status(AT_FDCWD, name.c_str());
  Checked(unlink(name.c_str()));
  return std::equal(digest, digest + kDigestSize, stored);
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) return 2;
  s_directory = arguments[2];
  return PrintSealTimes({Seal, Verify, &s_pauses}, count, arguments);
}

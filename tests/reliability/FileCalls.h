#ifndef TESTS_RELIABILITY_FILECALLS_H
#define TESTS_RELIABILITY_FILECALLS_H

#include <string>

namespace corvo_test {

// One file-system call of the library, made by this thread.
struct FileCall {
  const char* name;
  int descriptor;      // -1: it names its file
  const char* path;    // null: it has a descriptor
  const char* target;  // of link and rename; otherwise null
};

// What becomes of a call.
struct Fate {
  int error = 0;         // fail with it; close has closed all the same
  bool isShort = false;  // move half of the bytes, where it moves any
  bool isFull = false;   // there is no room on the disk for more than its files hold
};

// Sees every file-system call that the library makes in the thread that made the observer, while it
// lives. The observer's own calls are not seen.
class FileCallObserver {
 public:
  FileCallObserver();
  virtual ~FileCallObserver();
  FileCallObserver(const FileCallObserver&) = delete;
  FileCallObserver& operator=(const FileCallObserver&) = delete;

  virtual Fate Before(const FileCall&) { return {}; }
  virtual void After(const FileCall&, bool /*succeeded*/) {}
};

// Whether it is there to undo something: what it should remove stays when it fails.
bool Removes(const FileCall& call);

}  // namespace corvo_test

#endif

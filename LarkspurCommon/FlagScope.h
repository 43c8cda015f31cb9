#ifndef LARKSPURCOMMON_FLAGSCOPE_H
#define LARKSPURCOMMON_FLAGSCOPE_H

// Keeps a flag set while it lives: for code that a host's call may bring back to where it is.
class FlagScope {
 public:
  explicit FlagScope(bool& flag) : m_flag(flag), m_before(flag) { m_flag = true; }
  ~FlagScope() { m_flag = m_before; }
  FlagScope(const FlagScope&) = delete;
  FlagScope& operator=(const FlagScope&) = delete;

 private:
  bool& m_flag;
  const bool m_before;
};

#endif

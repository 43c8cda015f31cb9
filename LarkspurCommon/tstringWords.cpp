// Words, the white space between them, and tokens.

#include <iterator>
#include <utility>

#include "LarkspurCommon/tstring.h"

namespace {

constexpr char kSource[] = "tstringWords.cpp";

// Goes from word to word of a text. Behind the last one it stands at the end of the text.
class WordScanner {
 public:
  explicit WordScanner(std::string const& text)
      : m_text(text.c_str()), m_textEnd(m_text + text.size()), m_begin(m_text), m_end(m_text) {}

  bool Next() {
    m_begin = m_facet.scan_not(std::ctype_base::space, m_end, m_textEnd);
    m_end = m_facet.scan_is(std::ctype_base::space, m_begin, m_textEnd);
    return m_begin != m_textEnd;
  }

  std::size_t Begin() const { return static_cast<std::size_t>(m_begin - m_text); }
  std::size_t End() const { return static_cast<std::size_t>(m_end - m_text); }

 private:
  std::ctype<char> const& m_facet = tstring::Facet();
  char const* m_text;
  char const* m_textEnd;
  char const* m_begin;
  char const* m_end;
};

}  // namespace

tstring& tstring::Space(unsigned int n, char pad) {
  std::string result;
  std::size_t copied = 0;
  for (WordScanner words(*this); words.Next(); copied = words.End()) {
    if (words.Begin() > copied) result.append(n, pad);
    result.append(*this, words.Begin(), words.End() - words.Begin());
  }
  result.append(*this, copied, npos);
  swap(result);
  return *this;
}

unsigned int tstring::NumWords() const {
  unsigned int count = 0;
  for (WordScanner words(*this); words.Next();) ++count;
  return count;
}

tstring tstring::Words(unsigned int first, unsigned int count) const {
  unsigned int begin = 0;
  unsigned int end = 0;
  if (!GetSelectedWords(first, count, begin, end)) return {};
  return tstring(*this, begin, end - begin);
}

bool tstring::GetSelectedWords(unsigned int first, unsigned int count, unsigned int& begin,
                               unsigned int& end) const {
  if (first == 0) return false;
  WordScanner words(*this);
  for (unsigned int i = 0; i < first; ++i) {
    if (!words.Next()) return false;
  }
  begin = static_cast<unsigned int>(words.Begin());
  for (unsigned int i = 1; i < count && words.Next(); ++i) continue;
  end = static_cast<unsigned int>(words.End());
  return true;
}

void tstring::Tokenize(tstring& text, char const* delimiters, std::vector<tstring>& tokens) {
  if (!IsValidString(delimiters, 0)) {
    Assert(kSource, __LINE__, "Invalid string passed to tstring::Tokenize");
    delimiters = "";
  }
  std::vector<tstring> found;  // text may be one of the tokens, and hold the delimiters
  std::size_t begin = 0;
  for (std::size_t end; (end = text.find_first_of(delimiters, begin)) != npos; begin = end + 1) {
    found.emplace_back(text.c_str() + begin, static_cast<unsigned int>(end - begin));
  }
  text.erase(0, begin);
  found.push_back(text);
  tokens.insert(tokens.end(), std::make_move_iterator(found.begin()),
                std::make_move_iterator(found.end()));
}

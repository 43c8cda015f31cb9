#ifndef TOOLS_CORVO_INPUTERROR_H
#define TOOLS_CORVO_INPUTERROR_H

#include <stdexcept>
#include <string>

namespace corvo {

// What the user gave can't be used. The text is all he needs to know, file name included.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  InputError(const std::string& file, const std::string& reason)
      : std::runtime_error(file + ": " + reason) {}
};

}  // namespace corvo

#endif

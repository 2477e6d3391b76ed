// Address types with the operations of docs/platform.md, "What the plug-in needs", and no others.
// to_string() gives the plain text. The stream form is another one, in angle brackets: tests see by
// it where the plug-in takes which.
#ifndef NETTYPES_ADDRESS_H
#define NETTYPES_ADDRESS_H

#include <ostream>
#include <string>

namespace nettypes {

class IPAddr {
 public:
  virtual std::string to_string() const = 0;

 protected:
  ~IPAddr() = default;
};

class IPAddrMask {
 public:
  virtual std::string to_string() const = 0;

 protected:
  ~IPAddrMask() = default;
};

inline std::ostream& operator<<(std::ostream& out, const IPAddr& addr) {
  return out << "<" << addr.to_string() << ">";
}

inline std::ostream& operator<<(std::ostream& out, const IPAddrMask& mask) {
  return out << "<" << mask.to_string() << ">";
}

}  // namespace nettypes

#endif  // NETTYPES_ADDRESS_H

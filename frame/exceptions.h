#pragma once

#include <exception>

namespace vx {

/// Base of what the library throws about itself; caught by reference, never constructed alone.
/// Hosts do not have this type: they catch std::exception.
class BException : public std::exception {
 protected:
  BException() = default;
  BException(const BException&) = default;
  BException& operator=(const BException&) = default;

 private:
  virtual void mark() const = 0;
};

/// Memory for an ImageBuffer could not be allocated. Thrown by value; nothing in the library
/// catches it.
class MemoryException final : public BException {
 public:
  const char* what() const noexcept override { return "vxicore26: out of memory"; }

 private:
  void mark() const override {}
};

}  // namespace vx

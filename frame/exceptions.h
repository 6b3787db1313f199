#pragma once

namespace vx {

/// Base of what the library throws about itself; caught by reference, never constructed alone.
class BException {
 protected:
  BException() = default;
  BException(const BException&) = default;
  BException& operator=(const BException&) = default;
  ~BException() = default;

 private:
  virtual void mark() const = 0;
};

/// Memory for an ImageBuffer could not be had. Thrown by value; nothing in the library catches it.
class MemoryException final : public BException {
 private:
  void mark() const override {}
};

}  // namespace vx

#pragma once

#include <cassert>

namespace vx {

/// The order in which a stage that works in steps is called, so that work on the same rows can be
/// joined while they are in a cache:
///
///   begin()    fixes settings and memory
///   collect()  takes up rows, from the top down, until it has had all of them
///   process()  does what needs the whole plane
///   finish()   gives rows of the result, in any order and on several threads at a time
///   end()      closes the round; begin() may follow
///
/// Debug builds stop at a call out of turn.
class StepOrder {
 public:
  void begin() { at_ = kCollecting; }
  void collect() const { assert(at_ == kCollecting); }
  void process() {
    assert(at_ == kCollecting);
    at_ = kFinishing;
  }
  void finish() const { assert(at_ == kFinishing); }
  void end() {
    assert(at_ == kFinishing);
    at_ = kIdle;
  }

 private:
  enum { kIdle, kCollecting, kFinishing } at_ = kIdle;
};

}  // namespace vx

// A stack for walks over trees of any depth: a few frames in place, the others on the heap.
#pragma once

#include <array>
#include <cstdlib>
#include <cstring>
#include <type_traits>

namespace zorvcrt {

template <class Frame, std::size_t kInPlace = 32>
class FrameStack {
  static_assert(std::is_trivially_copyable_v<Frame>);

 public:
  FrameStack() { frames_ = in_place_.data(); }
  ~FrameStack() {
    if (frames_ != in_place_.data()) std::free(frames_);
  }
  FrameStack(const FrameStack &) = delete;
  FrameStack &operator=(const FrameStack &) = delete;

  [[nodiscard]] bool empty() const { return size_ == 0; }
  [[nodiscard]] Frame &top() { return frames_[size_ - 1]; }
  void pop() { --size_; }

  /// False when memory runs out.
  [[nodiscard]] bool push(const Frame &frame) {
    if (size_ == capacity_ && !grow()) return false;
    frames_[size_++] = frame;
    return true;
  }

 private:
  bool grow() {
    void *old = frames_ == in_place_.data() ? nullptr : frames_;
    void *grown = std::realloc(old, 2 * capacity_ * sizeof(Frame));
    if (grown == nullptr) return false;
    if (old == nullptr) std::memcpy(grown, in_place_.data(), sizeof in_place_);
    frames_ = static_cast<Frame *>(grown);
    capacity_ *= 2;
    return true;
  }

  std::array<Frame, kInPlace> in_place_;
  Frame *frames_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = kInPlace;
};

}  // namespace zorvcrt

// A counted reference to a kz::Object. Copying adds a count; destroying or reassigning releases
// one. `Reference<T>(new T(...))` is how an object gets its first owner.
#ifndef KNOB_KZ_REFERENCE_H
#define KNOB_KZ_REFERENCE_H

#include <utility>

namespace kz {

template <typename T>
class Reference {
 public:
  Reference() noexcept = default;
  explicit Reference(T* object) noexcept : object_(object) {
    if (object_ != nullptr) object_->addReference();
  }
  Reference(const Reference& other) noexcept : Reference(other.object_) {}
  Reference(Reference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ~Reference() {
    if (object_ != nullptr) object_->release();
  }
  Reference& operator=(Reference other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  T* get() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  T* operator->() const noexcept { return object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

 private:
  T* object_ = nullptr;
};

}  // namespace kz

#endif

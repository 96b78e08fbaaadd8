// Base of every shared object: carries the count of the references that hold it and frees itself
// when the last one goes. An object that lives on the stack or in another object is simply never
// held by a Reference. Counts are not atomic: the program has one thread.
#ifndef KNOB_KZ_OBJECT_H
#define KNOB_KZ_OBJECT_H

namespace kz {

class Object {
 public:
  Object() = default;
  // A copy is an object of its own: nobody holds it yet.
  Object(const Object&) noexcept {}
  Object& operator=(const Object&) noexcept { return *this; }
  virtual ~Object() = default;

  void addReference() const noexcept { ++references_; }
  void release() const noexcept {
    if (--references_ == 0) delete this;
  }
  long referenceCount() const noexcept { return references_; }

 private:
  mutable long references_ = 0;
};

}  // namespace kz

#endif

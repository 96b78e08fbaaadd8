// An ordered list of counted references, indexed from 0. An operation that returns a list makes a
// new one; the caller holds it through a Reference and releases it.
#ifndef KNOB_KZ_COLLECTIONS_LIST_H
#define KNOB_KZ_COLLECTIONS_LIST_H

#include <vector>

#include "kz/Object.h"
#include "kz/Reference.h"

namespace kz::collections {

template <typename T>
class List : public Object {
 public:
  int size() const noexcept { return static_cast<int>(elements_.size()); }
  // The index must be below size(). The list keeps its reference.
  T* get(int index) const { return elements_[static_cast<std::size_t>(index)].get(); }
  void add(Reference<T> element) { elements_.push_back(std::move(element)); }
  // Takes the element over.
  void add(T* element) { add(Reference<T>(element)); }

 private:
  std::vector<Reference<T>> elements_;
};

}  // namespace kz::collections

#endif

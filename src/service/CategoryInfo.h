// The record of one category of settings.
#ifndef KNOB_SERVICE_CATEGORY_INFO_H
#define KNOB_SERVICE_CATEGORY_INFO_H

#include "kz/String.h"

class CategoryInfo : public kz::Object {
 public:
  CategoryInfo() = default;
  CategoryInfo(int categoryId, kz::String categoryName, int categoryExtraInfo)
      : id(categoryId), name(categoryName), extraInfo(categoryExtraInfo) {}

  int id = 0;
  kz::String name;
  int extraInfo = 0;  // the engine's own; shown in the category's header of an export
};

#endif

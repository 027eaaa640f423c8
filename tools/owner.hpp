// Owners of what the library hands over.
#pragma once

#include <zorvcrt.h>

#include <memory>

namespace tools {

struct Release {
  void operator()(Logger *logger) const { Logger_Delete(logger); }
  void operator()(Config *config) const { Config_Close(config); }
  void operator()(ZJsonExpression *document) const { ZJsonExpression_Delete(document); }
  void operator()(ZJsonValue *value) const { ZJsonValue_Delete(value); }
  void operator()(ZJsonArray *array) const { ZJsonArray_Delete(array); }
  void operator()(ZJsonObject *object) const { ZJsonObject_Delete(object); }
  void operator()(ZJsonMember *member) const { ZJsonMember_Delete(member); }
  void operator()(char *text) const { ZfxMemFree(text); }
  void operator()(void *block) const { ZfxMemFree(block); }
};

template <class T>
using Owner = std::unique_ptr<T, Release>;

}  // namespace tools

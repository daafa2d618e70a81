#pragma once

#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

#include <MRZiPhoto/values/Array.h>
#include <MRZiPhoto/values/Dictionary.h>

namespace mrziphoto {

inline Value list(std::vector<Value> values) { return make<Array>(std::move(values)); }

inline Value dictionary(std::initializer_list<std::pair<std::string_view, Value>> entries) {
  return make<Dictionary>(entries);
}

}  // namespace mrziphoto

#include "Array.h"

#include "detail/Description.h"

namespace mrziphoto {

const Class Array::kClass{"NSArray", nullptr, 0, &makeEmpty<Array>};

std::string Array::description() const { return describe(*this); }

bool Array::isEqual(const Object& other) const {
  const auto* array = dynamic_cast<const Array*>(&other);
  return array != nullptr && _values == array->_values;
}

std::size_t Array::hash() const { return _values.size(); }

}  // namespace mrziphoto

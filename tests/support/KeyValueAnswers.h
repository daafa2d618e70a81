#pragma once

#include "Testing.h"

namespace mrziphoto {

struct KeyValueAnswer {
  std::string_view name;
  Value answer;
};

/// Expects these answers of an object by key-value access, and its description, but no fields.
inline void expectAnswers(const Object& object, const std::vector<KeyValueAnswer>& answers) {
  for (const KeyValueAnswer& each : answers) {
    EXPECT_EQ(object.valueForKey(each.name), each.answer)
        << object.className() << ' ' << each.name << ": "
        << object.valueForKey(each.name).description();
  }
  EXPECT_EQ(object.valueForKey("description").text(), object.description());
  EXPECT_THROW((void)object.valueForKey("_dictionary"), NSException) << object.className();
}

}  // namespace mrziphoto

#pragma once

#include <initializer_list>
#include <string_view>
#include <utility>

#include <MRZiPhoto/photos/ArchivedRecord.h>
#include <MRZiPhoto/photos/Key.h>

namespace mrziphoto::sample {

/// A record that an archive shows as one of any class, with any dictionary.
class SampleRecord final : public ArchivedRecord {
 public:
  SampleRecord(const Class& shownClass, Ref<Dictionary> dictionary)
      : ArchivedRecord(std::move(dictionary)), _shownClass(&shownClass) {}

  [[nodiscard]] const Class& objectClass() const override { return *_shownClass; }

 private:
  const Class* _shownClass;
};

[[nodiscard]] inline Value record(const Class& shownClass, Ref<Dictionary> dictionary) {
  return make<SampleRecord>(shownClass, std::move(dictionary));
}
[[nodiscard]] inline Value record(
    const Class& shownClass, std::initializer_list<std::pair<std::string_view, Value>> entries) {
  return record(shownClass, make<Dictionary>(entries));
}
/// A key of that class.
[[nodiscard]] inline Value archivedKey(std::uint32_t key, const Class& shownClass = Key::kClass) {
  return record(shownClass, {{Key::kKey, static_cast<std::int32_t>(key)}});
}

}  // namespace mrziphoto::sample

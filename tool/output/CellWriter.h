#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "JsonText.h"
#include "RecordWriter.h"

namespace mrziphoto::tool {

/// The part that all writers of cells share: each field becomes one text. The members of a list are
/// joined with "; "; an object, and what is nested in a list, is written as JSON.
class CellWriter : public RecordWriter {
 public:
  void null() override;
  void boolean(bool value) override;
  void number(std::string_view digits) override;
  void text(std::string_view text) override;
  void beginList() override;
  void endList() override;
  void beginObject() override;
  void name(std::string_view name) override { _json.name(name); }
  void endObject() override;

 protected:
  enum class CellKind { absent, text, number, list };

  /// Takes the next field's text.
  virtual void cell(std::string_view text, CellKind kind) = 0;

 private:
  void plain(std::string_view text, CellKind kind);
  void beginMember();
  void beginJson();
  void endJson();

  std::string _cell;
  JsonText _json{_cell};
  std::size_t _jsonDepth = 0;
  bool _inList = false;
  bool _hasMembers = false;
};

}  // namespace mrziphoto::tool

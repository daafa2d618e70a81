#include "CellWriter.h"

#include <utility>

namespace mrziphoto::tool {

void CellWriter::null() {
  if (_jsonDepth > 0) {
    _json.null();
  } else {
    plain("", CellKind::absent);
  }
}

void CellWriter::boolean(bool value) {
  if (_jsonDepth > 0) {
    _json.boolean(value);
  } else {
    plain(value ? "true" : "false", CellKind::text);
  }
}

void CellWriter::number(std::string_view digits) {
  if (_jsonDepth > 0) {
    _json.number(digits);
  } else {
    plain(digits, CellKind::number);
  }
}

void CellWriter::text(std::string_view text) {
  if (_jsonDepth > 0) {
    _json.text(text);
  } else {
    plain(text, CellKind::text);
  }
}

void CellWriter::plain(std::string_view text, CellKind kind) {
  if (_inList) {
    beginMember();
    _cell += text;
  } else {
    cell(text, kind);
  }
}

void CellWriter::beginMember() {
  if (std::exchange(_hasMembers, true)) {
    _cell += "; ";
  }
}

void CellWriter::beginList() {
  if (_inList || _jsonDepth > 0) {
    beginJson();
    _json.beginList();
    return;
  }
  _inList = true;
  _hasMembers = false;
  _cell.clear();
}

void CellWriter::endList() {
  if (_jsonDepth > 0) {
    _json.endList();
    endJson();
    return;
  }
  _inList = false;
  cell(_cell, CellKind::list);
}

void CellWriter::beginObject() {
  beginJson();
  _json.beginObject();
}

void CellWriter::endObject() {
  _json.endObject();
  endJson();
}

void CellWriter::beginJson() {
  if (_jsonDepth++ > 0) {
    return;
  }
  if (_inList) {
    beginMember();
  } else {
    _cell.clear();
  }
  _json.restart();
}

void CellWriter::endJson() {
  if (--_jsonDepth == 0 && !_inList) {
    cell(_cell, CellKind::text);
  }
}

}  // namespace mrziphoto::tool

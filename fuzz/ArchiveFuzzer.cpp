#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <MRZiPhoto/archive/ArchiveDocument.h>
#include <MRZiPhoto/archive/NSUnarchiver.h>
#include <MRZiPhoto/values/Log.h>
#include <MRZiPhoto/values/NSException.h>

namespace {

using namespace mrziphoto;

void decode(const Data& data) {
  const auto reader = NSUnarchiver::initForReadingWithData(data);
  while (reader && !reader->isAtEnd()) {
    const Value value = reader->decodeGroup();
    (void)value.description();
    (void)value.hash();
  }
}

void list(const Data& data) {
  const auto document = ArchiveDocument::initWithData(data);
  if (!document) {
    return;
  }
  std::size_t depth = 0;
  for (const ArchiveItem& item : document->items()) {
    using Kind = ArchiveItem::Kind;
    depth += item.kind == Kind::newObject ? 1 : 0;
    if ((item.kind == Kind::classReference && item.number >= document->classes().size()) ||
        (item.kind == Kind::cString && item.number >= document->cStrings().size()) ||
        (item.kind == Kind::endOfObject && depth-- == 0)) {
      std::abort();
    }
  }
  const Data written = document->write();
  if (ArchiveDocument::initWithData(written).value().write() != written) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  setLogSink({});
  const Data bytes = Data::copyOf({reinterpret_cast<const char*>(data), size});
  for (const auto use : {decode, list}) {
    try {
      use(bytes);
    } catch (const NSException&) {
      continue;
    }
  }
  return 0;
}

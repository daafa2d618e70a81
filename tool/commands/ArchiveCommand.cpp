#include <fmt/format.h>
#include <optional>
#include <string>

#include <MRZiPhoto/archive/ArchiveDocument.h>
#include <MRZiPhoto/files/FileManager.h>
#include <MRZiPhoto/values/NSException.h>

#include "../output/ArchivePrinting.h"
#include "../output/Failure.h"
#include "Commands.h"

namespace mrziphoto::tool {
namespace {

ArchiveDocument readArchive(const std::string& file) {
  FileFailure failure;
  const std::optional<Data> bytes = FileManager::contents(file, &failure);
  if (!bytes) {
    throw Failure(ExitStatus::notThere,
                  fmt::format("the file '{}' cannot be read: {}", file, failure.reason));
  }
  try {
    if (const std::optional<ArchiveDocument> document = ArchiveDocument::initWithData(*bytes)) {
      return *document;
    }
  } catch (const NSException& exception) {
    throw Failure(ExitStatus::notThere,
                  fmt::format("the archive '{}' is damaged: {}", file, exception.reason()));
  }
  throw Failure(ExitStatus::notThere,
                fmt::format("the file '{}' is no typed-object archive", file));
}

}  // namespace

void archive(Session& session) {
  const Format format = session.arguments.format;
  if (format == Format::csv) {
    throw Failure(ExitStatus::wrongUse, "the structure of an archive does not fit the format csv");
  }
  const ArchiveDocument document = readArchive(session.arguments.words.front());
  const auto write = format == Format::table ? writeArchiveLines : writeArchiveJson;
  write(session.output, document);
}

}  // namespace mrziphoto::tool

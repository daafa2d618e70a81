// The commands about photos.

#include <algorithm>
#include <string>
#include <vector>

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/photos/ImageRecRef.h>

#include "../output/Progress.h"
#include "Commands.h"
#include "Library.h"
#include "PhotoFields.h"

namespace mrziphoto::tool {
namespace {

/// The members of "a,b, c".
std::vector<std::string> splitAtCommas(const std::string& list) {
  std::vector<std::string> members;
  for (std::size_t begin = 0; begin <= list.size();) {
    const std::size_t end = std::min(list.find(',', begin), list.size());
    const std::size_t first = std::min(list.find_first_not_of(' ', begin), end);
    const std::size_t last = list.find_last_not_of(' ', end - 1);
    members.push_back(first == end ? "" : list.substr(first, last - first + 1));
    begin = end + 1;
  }
  return members;
}

/// The fields that `--fields` names; "all" by itself stands for every field there is.
PhotoFields fieldsAskedFor(const std::string& names) {
  return names == "all" ? PhotoFields::all() : PhotoFields::named(splitAtCommas(names));
}

void writeOnePhoto(Session& session, PhotoFields fields) {
  const Arguments& arguments = session.arguments;
  const Ref<ImageRecRef> photo = photoWithKey(openLibrary(session), arguments.words.front());
  const auto out =
      RecordWriter::to(session.output, arguments.format, Shape::single, fields.names());
  fields.write(*out, *photo);
  out->finish();
}

}  // namespace

void photos(Session& session) {
  const Arguments& arguments = session.arguments;
  PhotoFields fields =
      arguments.fields ? fieldsAskedFor(*arguments.fields) : PhotoFields::usual(arguments.format);
  const List<ImageRecRef> selected = selectPhotos(openLibrary(session), arguments);
  const auto out = RecordWriter::to(session.output, arguments.format, Shape::list, fields.names());
  Progress progress("Listing photos");
  // On a terminal the list itself shows how far it is.
  const bool isSeen = session.output.terminal().isThere;
  std::size_t done = 0;
  for (const Ref<ImageRecRef>& photo : selected) {
    fields.write(*out, *photo);
    photo->unload();
    ++done;
    if (!isSeen) {
      progress.show(done, selected.size());
    }
  }
  out->finish();
}

void photo(Session& session) { writeOnePhoto(session, PhotoFields::all()); }

void get(Session& session) {
  const std::vector<std::string>& words = session.arguments.words;
  writeOnePhoto(session, PhotoFields::named({words.begin() + 1, words.end()}));
}

}  // namespace mrziphoto::tool

// Asks a library of iPhoto 4 for what nothing here names: classes that archives name, the module
// that decodes pictures, and the string tables.

#include <iostream>

#include <MRZiPhoto/MRZiPhoto.h>

int main(int argc, char** argv) {
  const auto database =
      argc == 2 ? mrziphoto::TVQiPhotoDatabase::initWithContentsOfDirectory(argv[1]) : nullptr;
  if (!database || database->photos().empty()) {
    return 1;
  }
  std::cout << database->albums().size() << " albums\n";
  const auto path = database->photos()[0]->imagePath();
  const auto image = path ? mrziphoto::NSImage::initByReferencingFile(*path) : nullptr;
  const auto copy = image ? image->scaledCopy({8, 8}) : nullptr;
  std::cout << (copy && copy->pngData() ? "a picture" : "no picture") << '\n';
  std::cout << mrziphoto::TVQiPhotoFramework::bundle()->localizedStringForKey("_Favorite_",
                                                                              "Keyword")
            << '\n';
}

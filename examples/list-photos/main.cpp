#include <iostream>

#include <MRZiPhoto/MRZiPhoto.h>

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: list-photos LIBRARY\n";
    return 2;
  }
  const auto database = mrziphoto::TVQiPhotoDatabase::initWithContentsOfDirectory(argv[1]);
  if (!database) {
    std::cerr << "list-photos: " << argv[1] << " could not be opened\n";
    return 1;
  }
  for (const auto& photo : database->photos()) {
    std::cout << photo->keyStringValue() << '\t' << photo->caption().value_or("") << '\t'
              << photo->imagePath().value_or("(no image file)") << '\n';
  }
}

#include "DirectoryRec.h"

#include "../photos/Key.h"

namespace mrziphoto {

const Class DirectoryRec::kClass{"DirectoryRec", nullptr, 1, &makeEmpty<DirectoryRec>};

Value DirectoryRec::directoryKeyValue() const { return keyNumber(directoryKey()); }

}  // namespace mrziphoto

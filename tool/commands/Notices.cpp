#include "Notices.h"

#include <vector>

#include "../output/Messages.h"

namespace mrziphoto::tool {

bool tellNotices(Session& session) {
  if (session.arguments.strict) {
    return false;
  }
  std::vector<Notice> notices =
      session.database ? session.database->notices() : std::vector<Notice>();
  notices.insert(notices.end(), session.notices.begin(), session.notices.end());
  for (const Notice& notice : notices) {
    if (session.toldSentences.insert(notice.sentence).second) {
      Messages::notice("what of the library is missing, repaired or left out", notice.sentence);
    }
  }
  return !session.toldSentences.empty();
}

}  // namespace mrziphoto::tool

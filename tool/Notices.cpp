#include "Notices.h"

#include <string>
#include <vector>

#include "Output.h"

namespace mrziphoto::tool {

bool tellNotices(Session& session) {
  if (session.arguments.strict) {
    return false;
  }
  const std::vector<Notice> notices =
      session.database ? session.database->notices() : std::vector<Notice>();
  for (const Notice& notice : notices) {
    if (session.toldSentences.insert(notice.sentence).second && !session.arguments.quiet) {
      Output::complain(notice.sentence);
    }
  }
  return !session.toldSentences.empty();
}

}  // namespace mrziphoto::tool

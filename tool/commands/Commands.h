#pragma once

#include "Session.h"

namespace mrziphoto::tool {

// What the commands do. Each appends its answer to the output, and throws `Failure` when it has
// none.

void info(Session& session);
void photos(Session& session);
void rolls(Session& session);
void albums(Session& session);
void keywords(Session& session);
void photo(Session& session);
void get(Session& session);
void thumbnail(Session& session);
void contactSheet(Session& session);
void check(Session& session);
void dump(Session& session);
void watch(Session& session);
void archive(Session& session);
void sample(Session& session);
void help(Session& session);

}  // namespace mrziphoto::tool

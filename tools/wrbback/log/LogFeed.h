// The lines that the log service takes, live: wrbctl tail shows them.
#pragma once

#include <cstdint>

#include "LiveFeed.h"
#include "SharedBlock.h"

namespace wrb {

inline constexpr wchar_t kLogFeedSection[] = L"Calloway_Warrenby_BackEnd_Log_Feed";

struct FeedLine {
    uint32_t level;
    uint32_t process;
    uint32_t thread;
    uint32_t bytes;   // of the text
    char text[4080];  // as in the file, without its line end; cut to fit
};

using LogFeed = LiveFeed<FeedLine, 256>;
using SharedLogFeed = SharedBlock<LogFeed>;

}  // namespace wrb

// Tells what the log gate found when it was loaded, and logs once.

#include "vocabulary/LogGate.h"

#include <cstdio>

static void traced()
{
    VOICEDESK_TRACE("traced");
    std::printf("inside\n");
}

int main()
{
    std::printf("object %d id %d\n", g_logObject != nullptr ? 1 : 0, g_logModuleId);
    VOICEDESK_LOG_ERROR("%s, went wrong", "Probe::main");
    traced();
    return 0;
}

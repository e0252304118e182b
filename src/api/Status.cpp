#include "tidora/tidora.h"

const char* tidora_status_text(int status) {
    switch (status) {
        case TIDORA_OK:
            return "all is well";
        case TIDORA_INVALID:
            return "an argument cannot be used";
        case TIDORA_NO_MEMORY:
            return "there is not enough memory";
        case TIDORA_CANCELLED:
            return "the work was cancelled";
        case TIDORA_FAILED:
            return "the library or the system failed";
        default:
            return "no status of this library";
    }
}

const char* tidora_version(void) {
    return TIDORA_VERSION;
}

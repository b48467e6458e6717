#include "update/update_prompt.h"

namespace tevra {

UpdateOffer UpdateOffer::of(const Appcast& appcast) {
    return UpdateOffer{"Tevra " + appcast.version + " is available",
                       appcast.notes.value_or("A new version of Tevra is ready to download."),
                       appcast.url};
}

}  // namespace tevra

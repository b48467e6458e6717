#pragma once

#include <string>

#include "update/appcast.h"

namespace tevra {

// The offer of a newer release, in the words the user sees.
struct UpdateOffer {
    std::string message;      // "Tevra 1.2.0 is available"
    std::string informative;  // the feed's notes, or a sentence of our own
    std::string url;

    static UpdateOffer of(const Appcast& appcast);
};

// Where the offer meets the user: a modal dialog with "Download" and "Later",
// and the desktop's browser.
class UpdatePrompt {
public:
    virtual ~UpdatePrompt() = default;
    // Blocks until the user answers; true for "Download".
    virtual bool askToDownload(const UpdateOffer& offer) = 0;
    virtual void openURL(const std::string& url) = 0;
};

}  // namespace tevra

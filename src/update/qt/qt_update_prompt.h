#pragma once

#include "update/update_prompt.h"

namespace tevra {

// The offer as a QMessageBox; "Download" opens the page in the desktop's
// browser (QDesktopServices, through xdg-open).
class QtUpdatePrompt : public UpdatePrompt {
public:
    bool askToDownload(const UpdateOffer& offer) override;
    void openURL(const std::string& url) override;
};

}  // namespace tevra

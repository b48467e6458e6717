// The housekeeping of a start: the last run's crash report and the update
// check. Both are silent on every failure and never hold up the start.
#include "app/app_delegate.h"
#include "base/url.h"
#include "crash/crash_reporter.h"

namespace tevra {

std::string AppDelegate::appVersion() {
    const std::string version = WeftCoreInfo::version;
    return version.empty() ? "0.0.0" : version;
}

void AppDelegate::collectCrashReports() {
    // The handlers are in place since main; what a crash left is collected here.
    const std::filesystem::path dir = runtime_->dataDir();
    CrashReporter::collectPending(dir, appVersion());
    if (!services_.flushCrashReports || !services_.work) {
        return;
    }
    const WeftSettings& settings = runtime_->settings();
    const std::optional<std::string> endpoint =
        parseURL(settings.crashReportURL) ? std::optional(settings.crashReportURL) : std::nullopt;
    services_.work->run([flush = services_.flushCrashReports, dir,
                         enabled = settings.crashReportsEnabled,
                         endpoint] { flush(dir, enabled, endpoint); });
}

void AppDelegate::checkForUpdate() {
    if (!services_.checkForUpdate || !services_.updatePrompt || !services_.work) {
        return;
    }
    const std::string feed = runtime_->settings().appcastURL;
    if (!isHttpsURL(feed)) {
        return;
    }
    std::weak_ptr<AppDelegate> weak = weak_from_this();
    MainQueue* queue = &queue_;
    services_.work->run([check = services_.checkForUpdate, feed, weak, queue] {
        const UpdateDecision decision = check(feed, appVersion());
        if (decision.kind != UpdateDecision::Kind::updateAvailable) {
            return;  // up to date, or refused: no word, no log line
        }
        queue->post([weak, appcast = *decision.appcast] {
            if (auto self = weak.lock()) {
                self->offerUpdate(appcast);
            }
        });
    });
}

void AppDelegate::offerUpdate(const Appcast& appcast) {
    const UpdateOffer offer = UpdateOffer::of(appcast);
    if (services_.updatePrompt->askToDownload(offer) && isHttpsURL(offer.url)) {
        services_.updatePrompt->openURL(offer.url);
    }
}

}  // namespace tevra

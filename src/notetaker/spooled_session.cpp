#include "notetaker/spooled_session.h"

#include <algorithm>
#include <chrono>

#include "base/iso8601.h"
#include "notetaker/spool_file.h"

namespace tevra::SpooledSession {
namespace fs = std::filesystem;
namespace {

// The command that does a kept folder again, for the log.
std::string redoCommand(const SpoolFolder& folder) {
    return "tevractl notes process --mic '" + folder.mic().string() + "' --system '" +
           folder.system().string() + "' --app '" + folder.app + "' --started " +
           iso8601UTC(std::chrono::system_clock::time_point(
               std::chrono::duration_cast<std::chrono::system_clock::duration>(
                   std::chrono::duration<double>(folder.startedAt))));
}

// A folder whose description was lost began a recording's length before its
// microphone file was last written.
double startOf(const SpoolFolder& folder, int64_t samples, const SessionProcessor::Clock& clock) {
    if (folder.startedAt > 0) {
        return folder.startedAt;
    }
    std::error_code error;
    const auto written = fs::last_write_time(folder.mic(), error);
    const double end = error ? clock()
                             : std::chrono::duration<double>(
                                   std::chrono::file_clock::to_sys(written).time_since_epoch())
                                   .count();
    return end - static_cast<double>(samples) / SessionProcessor::sampleRate;
}

}  // namespace

std::optional<int64_t> process(const SessionServices& services, SpoolFolder folder,
                               const SessionProcessor::Clock& clock, const LogLine& log) {
    for (const fs::path& file : {folder.mic(), folder.system()}) {
        SpoolWriter::repair(file);
    }
    ProcessedSession result;
    {
        const SpoolSamples mic(folder.mic());
        const SpoolSamples system(folder.system());
        const int64_t longest =
            static_cast<int64_t>(std::max(mic.samples().size(), system.samples().size()));
        folder.startedAt = startOf(folder, longest, clock);
        result = SessionProcessor(services, clock)
                     .process(folder.app, folder.startedAt, mic.samples(), system.samples());
    }
    if (!result.id) {
        log("notetaker: no history database to save the session in; its recording stays in " +
            folder.dir.string());
        return std::nullopt;
    }
    if (result.failedWindows == 0) {
        SessionSpool::remove(folder);
        return result.id;
    }
    SessionSpool::markSaved(folder, *result.id);
    log("notetaker: " + std::to_string(result.failedWindows) + " windows of session #" +
        std::to_string(*result.id) + " could not be transcribed (" + result.lastWindowFailure +
        "); the recording stays in " + folder.dir.string() + ", and " + redoCommand(folder) +
        " does it again");
    return result.id;
}

}  // namespace tevra::SpooledSession

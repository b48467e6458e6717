#include "notetaker/transcript_assembly.h"

#include <algorithm>

#include "base/text.h"

namespace tevra::TranscriptAssembly {

std::vector<TranscriptLine> assemble(const std::vector<TranscribedChunk>& chunks) {
    std::vector<TranscriptLine> lines;
    lines.reserve(chunks.size());
    for (const TranscribedChunk& chunk : chunks) {
        std::string text = text::trim(chunk.text);
        if (!text.empty()) {
            lines.push_back({chunk.startTs, chunk.speaker, std::move(text)});
        }
    }
    std::stable_sort(lines.begin(), lines.end(),
                     [](const TranscriptLine& a, const TranscriptLine& b) { return a.ts < b.ts; });
    return lines;
}

std::string flatText(const std::vector<TranscriptLine>& lines) {
    std::string flat;
    for (size_t i = 0; i < lines.size(); ++i) {
        const TranscriptLine& line = lines[i];
        if (i > 0) {
            flat += '\n';
        }
        if (line.speaker == Speaker::me) {
            flat += "Me: ";
        } else if (line.speaker == Speaker::them) {
            flat += "Them: ";
        }
        flat += line.text;
    }
    return flat;
}

}  // namespace tevra::TranscriptAssembly

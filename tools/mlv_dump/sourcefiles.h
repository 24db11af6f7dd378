// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"
#include "mlv_dump/refusedoutput.h"

#include <filesystem>
#include <system_error>
#include <vector>

namespace mlvdump {

/// The files that a run reads. None of them is ever replaced, whatever the arguments say: nobody
/// can shoot the footage again.
class SourceFiles
{
public:
    /// The recording outlives this.
    SourceFiles(const mlv::Recording &recording, std::vector<std::filesystem::path> references)
        : m_recording(recording)
        , m_references(std::move(references))
    {
    }

    /// Throws RefusedOutput when the path leads to a file that the run reads.
    void requireOther(const std::filesystem::path &path) const
    {
        bool same = false;
        for (const auto &chunk : m_recording.chunks())
            same = same || chunk.file().isSameAs(path);
        for (const auto &reference : m_references) {
            std::error_code missing;
            same = same || std::filesystem::equivalent(path, reference, missing);
        }
        if (same)
            throw RefusedOutput("The output would replace a file that is read");
    }

private:
    const mlv::Recording &m_recording;
    std::vector<std::filesystem::path> m_references;
};

} // namespace mlvdump

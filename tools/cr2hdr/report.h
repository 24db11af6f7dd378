// SPDX-License-Identifier: MIT
#pragma once

#include "cr2hdr/survey.h"

#include <cstddef>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>

namespace dualiso {

/// Prints what was found out about the recording. As everything here it is lines "label : value" on
/// standard output, each in a write of its own: a reader shows one as soon as it is there.
void printFindings(const Survey &survey);

/// A path as a label: control characters don't break the line, and the end, which tells files
/// apart, is kept if it is long.
std::string labelOf(const std::filesystem::path &path);

/// What became of each frame, printed in the order of the frames whoever is ready first. May be
/// called from any thread.
class FrameLog
{
public:
    /// Tells of frame `index`, counted from 0, each once.
    void tell(std::size_t index, std::string label, std::string value);

private:
    struct Line
    {
        std::string label;
        std::string value;
    };

    std::mutex m_mutex; // guards what follows
    std::map<std::size_t, Line> m_waiting;
    std::size_t m_next = 0;
};

} // namespace dualiso

// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace dualiso {

/// A line "label : value" on standard output, in one write(): a reader that takes the output apart
/// chunk by chunk never meets half a line. It is cut to 4096 bytes, which a pipe takes in one
/// piece.
void print(std::string_view label, std::string_view value);

/// A path as a label: control characters don't break the line, and the end, which tells files
/// apart, is kept if it is long.
[[nodiscard]] std::string labelOf(const std::filesystem::path &path);

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

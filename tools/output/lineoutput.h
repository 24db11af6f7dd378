// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace output {

/// Prints lines. A reader takes the output apart in the chunks in which it comes and loses a line
/// when a chunk ends in the middle of one, so every write() has at most 4096 bytes, which a pipe
/// takes in one piece, and ends at a line end. Not for several threads at once.
class LineOutput
{
public:
    explicit LineOutput(int descriptor);
    LineOutput(const LineOutput &) = delete;
    LineOutput &operator=(const LineOutput &) = delete;
    ~LineOutput();

    /// Prints UTF-8 text, given without a line end, when flush() is called or enough has come
    /// together. A line that is too long for one write is cut.
    void line(std::string_view text);
    /// Sends everything now: before silent work, so that progress is seen. When nobody reads any
    /// more, the lines are lost.
    void flush();

private:
    int m_descriptor;
    std::string m_pending;
};

} // namespace output

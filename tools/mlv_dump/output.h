// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace mlvdump {

/// What a run did, for its last two lines.
struct Summary
{
    unsigned long frames = 0;
    double framesPerSecond = 0;
};

/// Prints lines. A reader takes the output apart in the chunks in which it comes and loses a line
/// when a chunk ends in the middle of one, so every write() has at most 4096 bytes, which a pipe
/// takes in one piece, and ends at a line end. Not for several threads at once.
class Output
{
public:
    explicit Output(int descriptor);
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;
    ~Output();

    /// Prints a line, given without its end, when flush() is called or enough has come together. A
    /// line that is too long for one write is cut.
    void line(std::string_view text);
    /// A line that a person should see and that does not stop the work.
    void warning(std::string_view text);
    /// A line that says why the run failed.
    void error(std::string_view text);
    /// Sends everything now: before silent work, so that progress is seen.
    void flush();
    /// The last two lines of a run, in one write of their own. To be called after every file is
    /// closed.
    void finish(const Summary &summary);

private:
    int m_descriptor;
    std::string m_pending;
};

} // namespace mlvdump

// SPDX-License-Identifier: MIT
#pragma once

#include "output/lineoutput.h"

#include <string_view>

namespace mlvdump {

/// What a run did, for its last two lines.
struct Summary
{
    unsigned long frames = 0;
    double framesPerSecond = 0;
};

/// Prints what a run has to say.
class Output : public output::LineOutput
{
public:
    using LineOutput::LineOutput;

    /// A line that a person should see and that does not stop the work.
    void warning(std::string_view text);
    /// A line that a person may want to know, although nothing is wrong with the result.
    void note(std::string_view text);
    /// A line that says what of the recording is lost.
    void loss(std::string_view text);
    /// A line that says why the run failed, when every other recording would fail with it.
    void error(std::string_view text);
    /// A line that says why the run failed, when that concerns this recording alone.
    void unusable(std::string_view text);
    /// The last two lines of a run, in one write of their own. To be called after every file is
    /// closed.
    void finish(const Summary &summary);
};

} // namespace mlvdump

// SPDX-License-Identifier: MIT
// A survey of arbitrary bytes, used on a recording: the one that the corpus was made of.
#include "mlv_dump/framerun.h"
#include "raw/error.h"
#include "surveyfile/surveyerror.h"

#include <cstdlib>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const int survey = ::memfd_create("survey", MFD_CLOEXEC);
    static const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (::ftruncate(survey, 0) != 0 ||
        ::pwrite(survey, data, size, 0) != static_cast<ssize_t>(size))
        std::abort();
    mlvdump::Options options;
    options.mode = mlvdump::Mode::Frames;
    options.input = "corpus/survey.MLV";
    options.output = "fuzzed";
    options.range.last = 1;
    options.threads = 1;
    options.knownSurvey = "/proc/self/fd/" + std::to_string(survey);
    try {
        auto known = std::optional(mlvdump::readSurvey(options));
        const mlv::Recording recording(options.input, std::move(known->recording));
        mlvdump::Output output(nowhere);
        mlvdump::runFrames(options, recording, known, output);
    } catch (const raw::Error &) {
        return 0;
    } catch (const mlv::ForeignIndex &) {
        return 0;
    } catch (const surveyfile::SurveyError &) {
        return 0;
    }
    return 0;
}

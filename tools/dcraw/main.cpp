// SPDX-License-Identifier: MIT
// dcraw: develops the DNGs of mlv_dump and cr2hdr as the real dcraw does, and has that do the rest.
#include "dcraw/frame.h"
#include "dcraw/largepages.h"
#include "dcraw/realdcraw.h"
#include "dcraw/threads.h"
#include "dcraw/tifffile.h"
#include "raw/error.h"

#include <cstdlib>
#include <iostream>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>

namespace {

/// Everything before the first byte is written.
struct Job
{
    explicit Job(const dcraw::Options &options)
        : frame(dcraw::readFrame(options))
        , input(options.file)
        , path(dcraw::outputPath(options.file))
        , file(path, frame.head.size(), frame.development.outputRowBytes(),
               frame.development.outputHeight())
    {
    }

    dcraw::Frame frame;
    std::string input;
    std::string path;
    dcraw::TiffFile file;
};

int run(Job &job)
{
    const dcraw::Development &development = job.frame.development;
    const auto pixels = std::int64_t{development.width} * development.height;
    try {
        job.file.writeHead(job.frame.head);
        develop(development, *job.frame.samples, job.file, dcraw::threadsFor(pixels));
        job.file.finish();
        return EXIT_SUCCESS;
    } catch (const std::system_error &error) {
        std::cerr << "dcraw: " << job.path << " can't be written: " << error.code().message()
                  << '\n';
    } catch (const raw::Error &error) { // the file has changed
        std::cerr << "dcraw: " << job.input << ' ' << error.what() << '\n';
    } catch (const std::exception &error) {
        std::cerr << "dcraw: " << job.path << " can't be written: " << error.what() << '\n';
    }
    return EXIT_FAILURE;
}

/// For filmwright-cli, which tells what develops a recording.
int printAbout()
{
    const auto forced = dcraw::forcedDcraw();
    const auto real = dcraw::findRealDcraw();
    std::cout << "program=Filmwright dcraw " FILMWRIGHT_VERSION "\n"
              << "covers=" << (forced ? "" : "DNGs of mlv_dump and cr2hdr") << '\n'
              << "other=" << forced.value_or(real.value_or("")) << '\n';
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc == 2 && argv[1] == std::string_view("--filmwright"))
        return printAbout();
    if (dcraw::forcedDcraw())
        return dcraw::handOver(argv, {});
    dcraw::useLargePages();
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    std::string subject = "the command line";
    std::optional<Job> job;
    try {
        const auto options = dcraw::parseOptions(arguments.subspan(argc > 0 ? 1 : 0));
        subject = options.file;
        job.emplace(options);
    } catch (const std::exception &error) {
        return dcraw::handOver(argv, subject + ' ' + error.what());
    }
    return run(*job);
}

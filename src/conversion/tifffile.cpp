// SPDX-License-Identifier: MIT
#include "conversion/tifffile.h"

#include <QFile>

#include <cstdarg>
#include <fcntl.h>
#include <unistd.h>

namespace filmwright {

namespace {

// A header can ask libtiff for tables of any size; those of a frame's single strip are tiny.
constexpr tmsize_t maxTableBytes = tmsize_t(64) * 1024 * 1024;

int dropMessage(TIFF *, void *, const char *, const char *, va_list)
{
    return 1; // handled: not passed on to the process-wide handler, which prints
}

struct OptionsDeleter
{
    void operator()(TIFFOpenOptions *options) const { TIFFOpenOptionsFree(options); }
};

} // namespace

TiffHandle openTiff(const QFileDevice &file, TiffAccess access)
{
    const std::unique_ptr<TIFFOpenOptions, OptionsDeleter> options(TIFFOpenOptionsAlloc());
    if (!options)
        return {};
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), maxTableBytes);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), dropMessage, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), dropMessage, nullptr);
    // A descriptor of libtiff's own, because it closes it; closed in child processes too.
    const int descriptor = fcntl(file.handle(), F_DUPFD_CLOEXEC, 0);
    if (descriptor < 0)
        return {};
    // m: samples are read into the caller's memory, instead of through a mapping; c: a strip at
    // once, however large, instead of a row at a time.
    TIFF *tiff = TIFFFdOpenExt(descriptor, QFile::encodeName(file.fileName()).constData(),
                               access == TiffAccess::Read ? "rmc" : "w", options.get());
    if (!tiff)
        close(descriptor);
    return TiffHandle(tiff);
}

} // namespace filmwright

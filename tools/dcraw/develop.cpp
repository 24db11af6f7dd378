// SPDX-License-Identifier: MIT
#include "../../tests/tools/dcraw/plaindevelopment.h"
#include "development.h"

namespace dcraw {

bool develop(const Development &development, const SampleRows &samples, PixelSink &sink,
             unsigned /*threads*/)
{
    return sink.write(0, plain::develop(development, samples));
}

} // namespace dcraw

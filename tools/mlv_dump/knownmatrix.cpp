// SPDX-License-Identifier: MIT
#include "mlv_dump/knownmatrix.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace mlvdump {
namespace {

using TenThousandths = std::array<std::int32_t, 9>;

struct Slip
{
    std::uint32_t model; ///< in the IDNT block
    const char *camera;
    TenThousandths recorded;
    TenThousandths right;
};

// A digit that slipped in the first two; the third has another camera's matrix. With what they
// record, a grey card at 5200 K comes out reddish, greenish and purple.
constexpr std::array<Slip, 3> slips{{
    {0x80000270,
     "EOS 550D",
     {6461, -1164, -857, -3825, 11597, 2534, -416, 1540, 6039},
     {6941, -1164, -857, -3825, 11597, 2534, -416, 1540, 6039}},
    {0x80000261,
     "EOS 50D",
     {4920, 616, -593, -6493, 12964, 2784, -1774, 3178, 7005},
     {4920, 616, -593, -6493, 13964, 2784, -1774, 3178, 7005}},
    {0x80000349,
     "EOS 5D Mark IV",
     {6722, -635, -963, -4287, 12460, 2028, -908, 2162, 5668},
     {6446, -366, -864, -4436, 12204, 2513, -952, 2496, 6348}},
}};

bool records(const mlv::RawInfo &rawInfo, const TenThousandths &matrix)
{
    for (std::size_t i = 0; i < matrix.size(); ++i)
        if (rawInfo.colourMatrix[2 * i] != matrix[i] || rawInfo.colourMatrix[2 * i + 1] != 10000)
            return false;
    return true;
}

} // namespace

std::string KnownMatrix::remark() const
{
    return "the recorded colour matrix is not that of an " + camera + ", which is taken instead";
}

std::optional<KnownMatrix> knownMatrix(const mlv::Recording &recording)
{
    const auto &identity = recording.identity();
    const auto &rawInfo = recording.rawInfo();
    const auto *const slip = std::ranges::find_if(slips, [&](const Slip &candidate) {
        return identity && rawInfo && identity->model == candidate.model &&
               records(*rawInfo, candidate.recorded);
    });
    if (slip == slips.end())
        return std::nullopt;
    KnownMatrix known{slip->camera, {}};
    std::ranges::transform(slip->right, known.matrix.begin(),
                           [](std::int32_t number) { return number / 10000.0; });
    return known;
}

} // namespace mlvdump

// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

/// The merge of mergePixels() as plainly as it can be written, one pixel after the other, every
/// value in the precision that defines the result.
void mergeReference(const std::uint8_t *first, const std::uint8_t *second, std::uint8_t *result,
                    std::size_t count);

/// The same for samples of 16 bits, with saturations compared as exact products.
void mergeReference(const std::uint16_t *first, const std::uint16_t *second, std::uint16_t *result,
                    std::size_t count);

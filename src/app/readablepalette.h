// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>

namespace filmwright {

/// The least contrast of text that nearly everybody can read (level AA of the Web Content
/// Accessibility Guidelines 2.1).
constexpr double leastContrast = 4.5;

/// The contrast of two opaque colours by the same guidelines, 1 to 21.
double contrast(const QColor &one, const QColor &other);

/// Mends the texts of the application's palette that many themes make too faint: the selected ones,
/// and what an empty field says. To be called at the start and when the palette has changed; main
/// thread only.
void keepTextReadable();

} // namespace filmwright

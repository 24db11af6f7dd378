// SPDX-License-Identifier: MIT
#pragma once

namespace dcraw {

/// Has what the program allocates from now on lie in large pages, where the system has them. The
/// first touch of a page costs microseconds, and a frame's memory is touched once. To be called
/// before there is a second thread.
void useLargePages();

} // namespace dcraw

// SPDX-License-Identifier: MIT
#pragma once

/// Delivers what is under way to this thread: posted events, what these post in turn, deletions.
/// Whatever comes afterwards is brought by a timer, a child or another thread.
void deliverEvents();

/// Waits until no more children than these are left and the threads of Qt's pool are idle, and
/// delivers what follows from that, until nothing does. Only timers aren't waited for.
void settle(int children = 0);

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/** Keeps signals away from the calling thread: they belong to the program's main thread. */
void blockThreadSignals();

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Between host order and the link's big-endian order. To-send and from-send are the same transformation: a
// byte reversal on a little-endian host, nothing on a big-endian one. A `long` has 32 bits on the link
// whatever the host's: of a wider one the low 32 bits are taken, and the result is sign-extended.

int PrepareToSendInt(int value);
long PrepareToSendLong(long value);
long long PrepareToSendLongLong(long long value);
int PrepareFromSendInt(int value);
long PrepareFromSendLong(long value);
long long PrepareFromSendLongLong(long long value);

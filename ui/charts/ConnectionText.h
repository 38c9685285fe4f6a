// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>
#include <cstdint>

#include "daemon/ConnectionInfo.h"
#include "libs/utils/src/IpAddress.h"

// How a connection becomes text where more is told of it than the daemon's own texts say. Any thread.

/** "TCP", "UDP", or the protocol's number. */
QString protocolText(std::int32_t socketProtocol);

/** The usual notation, that of IPv6 by RFC 5952, without the port; empty for an address of unknown kind. */
QString hostText(const IpAddress& address);

/** The same with the port: "192.0.2.1:443", "[2001:db8::1]:443". */
QString endpointText(const IpAddress& address);

/** "1 d 2 h 5 s"; "0 s" for nothing and less. */
QString durationText(std::int64_t seconds);

/** Numbers for the date with the whole year, and seconds, without the zone: what a picker or a narrow cell shows. */
QString shortDateFormat(const QLocale& locale);
QString shortDateText(const QDateTime& time);

/** All that is worth knowing of a connection, a line each. */
QString connectionText(const ConnectionInfo& connection);

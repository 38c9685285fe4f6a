// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/ConnectionText.h"

#include <arpa/inet.h>

#include <QStringList>

#include "ui/charts/TrafficFormat.h"

QString protocolText(std::int32_t socketProtocol) {
    switch (socketProtocol) {
        case IPPROTO_TCP:
            return QStringLiteral("TCP");
        case IPPROTO_UDP:
            return QStringLiteral("UDP");
        default:
            return QString::number(socketProtocol);
    }
}

QString hostText(const IpAddress& address) {
    if (IpAddress::addressLength(address.family) == 0) {
        return {};
    }
    char text[INET6_ADDRSTRLEN];
    const int family = address.family == IpAddress::IPv6 ? AF_INET6 : AF_INET;
    return QString::fromLatin1(::inet_ntop(family, address.address.data(), text, sizeof text));
}

QString endpointText(const IpAddress& address) {
    const QString host = hostText(address);
    if (host.isEmpty()) {
        return {};
    }
    return (address.family == IpAddress::IPv6 ? '[' + host + ']' : host) + ':' +
           QString::number(address.port);
}

QString durationText(std::int64_t seconds) {
    struct Unit {
        std::int64_t seconds;
        const char* name;
    };
    QStringList parts;
    for (const Unit unit : {Unit{86400, "d"}, Unit{3600, "h"}, Unit{60, "min"}, Unit{1, "s"}}) {
        if (seconds >= unit.seconds) {
            parts.append(QString::number(seconds / unit.seconds) + ' ' + QLatin1String(unit.name));
            seconds %= unit.seconds;
        }
    }
    return parts.isEmpty() ? QStringLiteral("0 s") : parts.join(' ');
}

QString shortDateFormat(const QLocale& locale) {
    QString date = locale.dateFormat(QLocale::ShortFormat);
    if (!date.contains("yyyy")) {
        date.replace("yy", "yyyy");
    }
    return date + "  " + locale.timeFormat(QLocale::LongFormat).remove('t').trimmed();
}

QString shortDateText(const QDateTime& time) {
    return QLocale().toString(time, shortDateFormat(QLocale()));
}

QString connectionText(const ConnectionInfo& connection) {
    const QString unknown = QStringLiteral("unknown");
    const auto orUnknown = [&](const QString& text) { return text.isEmpty() ? unknown : text; };
    const QDateTime start = connection.startTime();
    const QDateTime end = connection.endTime();
    const QStringList lines{
        "Protocol: " + protocolText(connection.socketProtocol()),
        "Local: " + orUnknown(endpointText(connection.localEndpoint())),
        "Remote: " + orUnknown(endpointText(connection.remoteEndpoint())),
        "Start: " + orUnknown(NSDateToNSString(start).trimmed()),
        "End: " + orUnknown(NSDateToNSString(end).trimmed()),
        "Duration: " + (start.isValid() && end.isValid() ? durationText(start.secsTo(end)) : unknown),
    };
    return lines.join('\n');
}

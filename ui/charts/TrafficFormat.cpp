// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/TrafficFormat.h"

#include <unicode/simpletz.h>
#include <unicode/smpdtfmt.h>

#include <QByteArray>
#include <QRegularExpression>
#include <QTimeZone>
#include <algorithm>
#include <charconv>
#include <iterator>
#include <memory>
#include <optional>

namespace {

constexpr double megabytesPerByte = 9.5367431640625e-07;  // 2^-20

/** In bytes. The steps are meant to be irregular. */
constexpr double dividers[] = {
    0x1p10, 0x1p13, 0x1p14, 0x1p15, 0x1p16, 0x1p17, 0x1p19, 0x1p20, 0x1p23,
    0x1p26, 0x1p27, 0x1p29, 0x1p30, 0x1p33, 0x1p36, 0x1p37, 0x1p39, 0x1p40,
};

/** The name of the locale for dates; empty where the environment does not say and the platform has to. */
QByteArray userLocaleName() {
    for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
        const QByteArray name = qgetenv(variable);
        if (!name.isEmpty()) {
            return name;
        }
    }
    return {};
}

QString toQString(const icu::UnicodeString& text) {
    return QStringView(text.getBuffer(), text.length()).toString();
}

/** Some locales put the zone in front of the time, or in brackets. */
void putZoneLast(icu::SimpleDateFormat& format) {
    icu::UnicodeString localePattern;
    QString pattern = toQString(format.toPattern(localePattern));
    if (pattern.endsWith(QLatin1String(" z"))) {
        return;
    }
    static const QRegularExpression zone("\\s*[(\\[]?z[)\\]]?");
    pattern = pattern.remove(zone).simplified() + " z";
    format.applyPattern(icu::UnicodeString(pattern.utf16(), static_cast<int>(pattern.size())));
}

/** Costly to make and not to be shared by threads: each keeps the one that it used last. */
class DateFormatter {
  public:
    DateFormatter(const QByteArray& localeName, const QByteArray& zoneId)
        : m_LocaleName(localeName), m_ZoneId(zoneId) {
        const auto locale = localeName.isEmpty() ? icu::Locale::getDefault()
                                                 : icu::Locale::createCanonical(localeName.constData());
        m_Format.reset(
            icu::DateFormat::createDateTimeInstance(icu::DateFormat::kFull, icu::DateFormat::kLong, locale));
        std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(zoneId.constData()));
        m_IsZoneKnown = *zone != icu::TimeZone::getUnknown();
        if (auto* format = dynamic_cast<icu::SimpleDateFormat*>(m_Format.get())) {
            putZoneLast(*format);
            format->adoptTimeZone(zone.release());
        }
    }

    bool isFor(const QByteArray& localeName, const QByteArray& zoneId) const {
        return m_LocaleName == localeName && m_ZoneId == zoneId;
    }

    QString text(const QDateTime& date) {
        if (m_Format == nullptr) {
            return {};  // ICU came without its data
        }
        if (!m_IsZoneKnown) {
            m_Format->adoptTimeZone(
                new icu::SimpleTimeZone(date.toLocalTime().offsetFromUtc() * 1000, "user's offset"));
        }
        icu::UnicodeString text;
        return toQString(m_Format->format(static_cast<UDate>(date.toMSecsSinceEpoch()), text));
    }

  private:
    QByteArray m_LocaleName;
    QByteArray m_ZoneId;
    std::unique_ptr<icu::DateFormat> m_Format;
    bool m_IsZoneKnown = true;  ///< false for TZ="<+0530>-05:30" and the like: only offsets are known
};

DateFormatter& userFormatter() {
    thread_local std::optional<DateFormatter> formatter;
    const QByteArray localeName = userLocaleName();
    const QByteArray zoneId = QTimeZone::systemTimeZoneId();
    if (!formatter.has_value() || !formatter->isFor(localeName, zoneId)) {
        formatter.emplace(localeName, zoneId);
    }
    return *formatter;
}

}  // namespace

QString NSDateToNSString(const QDateTime& date) {
    if (!date.isValid()) {
        return {};
    }
    const QString text = userFormatter().text(date);
    return text.left(text.lastIndexOf(QLatin1String("GMT")));  // -1 takes it all
}

double bytesToMegabytes(std::int64_t bytes) {
    return static_cast<double>(bytes) * megabytesPerByte;
}

QString megabytesToNSString(double megabytes) {
    char text[330];  // the largest double has 309 digits before the point
    const auto end =
        std::to_chars(std::begin(text), std::end(text), megabytes, std::chars_format::fixed, 3).ptr;
    return QLatin1String(text, end);  // exact, unlike QString's own, which rounds ties up
}

QString bytesToNSString(std::int64_t bytes) {
    return megabytesToNSString(bytesToMegabytes(bytes));
}

double calcGraphicMeshHeightFromBytesPeak(double peak) {
    const double target = peak / 10.0;
    const auto* step = std::find_if(std::begin(dividers), std::end(dividers),
                                    [target](double divider) { return divider >= target; });
    return step != std::end(dividers) ? *step : dividers[std::size(dividers) - 1];
}

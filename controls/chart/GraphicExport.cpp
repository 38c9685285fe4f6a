// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicExport.h"

#include <QFileInfo>
#include <QPdfWriter>
#include <QSaveFile>
#include <QSvgGenerator>
#include <algorithm>
#include <cmath>
#include <map>

#include "controls/CsvRecord.h"
#include "controls/chart/GraphicView.h"
#include "controls/chart/GraphicViewDelegate.h"

namespace {

constexpr qreal pictureScale = 2;  // at least
constexpr qreal pointsPerInch = 72;

QByteArray xField(float x, GraphicViewDelegate* delegate) {
    const QDateTime date = delegate != nullptr ? delegate->dateAtX(x) : QDateTime();
    return date.isValid() ? CsvRecord::dateField(date) : QByteArray::number(x, 'g', 9);
}

/** Lets `write` fill a file that takes the place of another only when all of it could be written. */
template <typename Write>
QString saved(const QString& path, Write write) {
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && write(file) && file.commit()) {
        return {};
    }
    return file.errorString();
}

}  // namespace

QImage GraphicExport::picture() const {
    const qreal scale = std::max(pictureScale, m_View.devicePixelRatioF());
    QImage image((QSizeF(m_View.size()) * scale).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    m_View.drawOn(image);
    return image;
}

QString GraphicExport::savePicture(const QString& path) const {
    const QString suffix = QFileInfo(path).suffix().toLower();
    return saved(path, [&](QSaveFile& file) {
        if (suffix == "svg") {
            QSvgGenerator svg;
            svg.setOutputDevice(&file);
            svg.setResolution(m_View.logicalDpiX());  // or text would have another size than on the screen
            svg.setSize(m_View.size());
            svg.setViewBox(m_View.rect());
            svg.setTitle(m_View.accessibleName());
            m_View.drawOn(svg);
            return true;
        }
        if (suffix == "pdf") {
            QPdfWriter pdf(&file);
            const int pixelsPerInch = m_View.logicalDpiX();
            pdf.setPageSize(
                QPageSize(QSizeF(m_View.size()) * (pointsPerInch / pixelsPerInch), QPageSize::Point));
            pdf.setPageMargins({});
            pdf.setResolution(pixelsPerInch);
            pdf.setTitle(m_View.accessibleName());
            m_View.drawOn(pdf);
            return true;
        }
        return picture().save(&file, "PNG");
    });
}

QString GraphicExport::savePoints(const QString& path) const {
    return saved(path, [this](QSaveFile& file) {
        const QByteArray text = points();
        return file.write(text) == text.size();
    });
}

QByteArray GraphicExport::points() const {
    const GraphicScene& scene = m_View.scene();
    std::map<float, QByteArrayList> records;
    for (unsigned i = 0; i < m_View.lineCount(); ++i) {
        const GraphicLine& data = scene.lines[i].data;
        const auto [first, last] = data.within(scene.viewport.left(), scene.viewport.right());
        for (std::size_t j = first; j < last; ++j) {
            const GraphicLine::Point& point = data.points()[j];
            QByteArrayList& values = records.try_emplace(point.x, m_View.lineCount()).first->second;
            values[i] = QByteArray::number(std::llround(point.y));
        }
    }
    QByteArray text = header();
    for (const auto& [x, values] : records) {
        text += CsvRecord::joined(QByteArrayList{xField(x, scene.delegate)} + values);
    }
    return text;
}

QByteArray GraphicExport::header() const {
    const GraphicScene& scene = m_View.scene();
    const QString& xName = scene.descriptions[0];
    const QString unit = scene.delegate != nullptr ? scene.delegate->valueUnit() : QString();
    QByteArrayList names{CsvRecord::field(xName.isEmpty() ? QStringLiteral("X") : xName)};
    for (unsigned i = 0; i < m_View.lineCount(); ++i) {
        names.append(CsvRecord::field((m_View.lineName(i) + ' ' + unit).trimmed()));
    }
    return CsvRecord::joined(names);
}

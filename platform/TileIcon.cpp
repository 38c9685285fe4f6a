// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/TileIcon.h"

#include <QApplication>
#include <QFileInfo>
#include <QIconEngine>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

/** Equal in brightness; white has 4.9:1 on each. */
constexpr QRgb hues[] = {0xbd4c44, 0xa26136, 0x8d6c29, 0x6b7731, 0x4f7c40, 0x367f54,
                         0x2f7d73, 0x317992, 0x6769b7, 0x845fb7, 0x9d55ab, 0xb54a88};
constexpr QRgb kernelColor = 0x57606d;
constexpr QRgb applicationsColor = 0x33476b;

constexpr qreal grid = 16;  // units along a tile's side; what is drawn on whole ones is sharp at 16, 32 ...
constexpr qreal rounding = 4;
constexpr qreal letterHeight = 10;  // units, of the font and not of its capitals
constexpr qreal disabledOpacity = 0.45;
const QColor edge(255, 255, 255, 56);  // parts a tile from a selected row of a like colour

/** Draws into a square of `grid` units; the painter's pen and brush are white. */
using Sign = void (*)(QPainter& painter, QChar letter);

void drawLetter(QPainter& painter, QChar letter) {
    QFont font = QApplication::font();
    font.setWeight(QFont::DemiBold);
    font.setPixelSize(static_cast<int>(letterHeight));
    const QFontMetricsF metrics(font);
    const QString text(letter);
    painter.setFont(font);
    painter.drawText(QPointF((grid - metrics.horizontalAdvance(text)) / 2, (grid + metrics.capHeight()) / 2),
                     text);
}

void drawProcessor(QPainter& painter, QChar) {
    for (const int at : {6, 9}) {
        painter.fillRect(QRectF(at, 2.5, 1, 11), Qt::white);
        painter.fillRect(QRectF(2.5, at, 11, 1), Qt::white);
    }
    painter.setPen(Qt::NoPen);
    painter.drawRoundedRect(QRectF(4, 4, 8, 8), 1, 1);
    painter.fillRect(QRectF(6, 6, 4, 4), QColor(kernelColor));
}

void drawFourTiles(QPainter& painter, QChar) {
    painter.setPen(Qt::NoPen);
    for (const QPointF corner : {QPointF(3, 3), QPointF(9, 3), QPointF(3, 9), QPointF(9, 9)}) {
        painter.drawRoundedRect(QRectF(corner, QSizeF(4, 4)), 1, 1);
    }
}

class TileEngine : public QIconEngine {
  public:
    TileEngine(QRgb ground, Sign sign, QChar letter = {})
        : m_Ground(ground), m_Sign(sign), m_Letter(letter) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
        const int side = std::min(rect.width(), rect.height());
        const QPoint corner(rect.x() + (rect.width() - side) / 2, rect.y() + (rect.height() - side) / 2);
        painter->save();
        if (mode == QIcon::Disabled) {  // as one picture: parts that overlap would show through each other
            painter->setOpacity(painter->opacity() * disabledOpacity);
            painter->drawPixmap(QRect(corner, QSize(side, side)), sharpPixmap(*painter, side, state));
        } else {
            painter->translate(corner);
            draw(*painter, side);
        }
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }

    QIconEngine* clone() const override { return new TileEngine(*this); }

  private:
    /** The tile as it is painted where it is not disabled, with as many pixels as the screen has. */
    QPixmap sharpPixmap(const QPainter& painter, int side, QIcon::State state) {
        const qreal scale = painter.device()->devicePixelRatioF();
        const int pixels = static_cast<int>(std::ceil(side * scale));
        return pixmap(QSize(pixels, pixels), QIcon::Normal, state);
    }

    void draw(QPainter& painter, int side) const {
        const qreal unit = side / grid;
        const QRectF tile(0, 0, side, side);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(m_Ground));
        painter.drawRoundedRect(tile, rounding * unit, rounding * unit);
        painter.setPen(QPen(edge, 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(tile.adjusted(0.5, 0.5, -0.5, -0.5), rounding * unit - 0.5,
                                rounding * unit - 0.5);
        painter.scale(unit, unit);
        painter.setPen(Qt::white);
        painter.setBrush(Qt::white);
        m_Sign(painter, m_Letter);
    }

    QRgb m_Ground;
    Sign m_Sign;
    QChar m_Letter;
};

/** FNV-1a: unlike Qt's own hash, the same in every process. */
quint32 stableHash(const QString& text) {
    quint32 hash = 2166136261U;
    for (const char byte : text.toUtf8()) {
        hash = (hash ^ static_cast<uchar>(byte)) * 16777619U;
    }
    return hash;
}

QChar letterOf(const QString& path) {
    const QString name = QFileInfo(path).fileName();
    const auto* letter =
        std::find_if(name.cbegin(), name.cend(), [](QChar c) { return c.isLetterOrNumber(); });
    return letter != name.cend() ? letter->toUpper() : QChar(u'\u2022');
}

}  // namespace

QIcon TileIcon::forPath(const QString& path) {
    return QIcon(new TileEngine(hues[stableHash(path) % std::size(hues)], drawLetter, letterOf(path)));
}

QIcon TileIcon::kernel() {
    return QIcon(new TileEngine(kernelColor, drawProcessor));
}

QIcon TileIcon::allApplications() {
    return QIcon(new TileEngine(applicationsColor, drawFourTiles));
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/AxisLabels.h"

#include <QStringList>
#include <QTextBoundaryFinder>
#include <algorithm>
#include <cmath>
#include <utility>

#include "controls/chart/GraphicMesh.h"

namespace {

constexpr qreal labelGap = 16;           // pixels between two labels side by side
constexpr qreal lineGap = 4;             // pixels between two labels above each other
constexpr std::size_t enoughLabels = 3;  // for which more lines of text are not worth their height

constexpr std::size_t enoughForAScale = 3;

struct Piece {
    QString text;  ///< ends with the blanks in front of the next one
    qreal width;
};

/** Where a line may end by the rules of its script, and behind every blank: those keep "21, 2026" together. */
std::vector<Piece> pieces(const QString& text, const QFontMetricsF& metrics) {
    std::vector<Piece> result;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Line, text);
    qsizetype begin = 0;
    for (qsizetype end = 1; end <= text.size(); ++end) {
        finder.setPosition(end);
        const bool isBehindBlank = end < text.size() && text[end - 1].isSpace() && !text[end].isSpace();
        if (end == text.size() || isBehindBlank || finder.isAtBoundary()) {
            const QString piece = text.mid(begin, end - begin);
            result.push_back({piece, metrics.horizontalAdvance(piece)});
            begin = end;
        }
    }
    return result;
}

/** By what a text counts as wider when a line of it ends after this: a comma is best, a word's end will do. */
qreal awkwardness(const QString& end) {
    return end.trimmed().endsWith(',') ? 1 : (end.back().isSpace() ? 1.2 : 1.5);
}

/** At most so many lines, which hold the pieces from one on. */
struct Filling {
    qreal widest;
    qreal awkwardness;
    std::vector<std::size_t> ends;  ///< of each line, exclusive

    qreal cost() const { return widest * awkwardness; }
};

qreal widthOf(const std::vector<Piece>& pieces, std::size_t begin, std::size_t end) {
    qreal width = 0;
    for (std::size_t i = begin; i < end; ++i) {
        width += pieces[i].width;
    }
    return width;
}

Filling filling(const std::vector<Piece>& pieces, std::size_t begin, int lines) {
    Filling best{widthOf(pieces, begin, pieces.size()), 1, {pieces.size()}};
    for (std::size_t end = begin + 1; lines > 1 && end < pieces.size(); ++end) {
        Filling rest = filling(pieces, end, lines - 1);
        rest.widest = std::max(rest.widest, widthOf(pieces, begin, end));
        rest.awkwardness *= awkwardness(pieces[end - 1].text);
        if (rest.cost() < best.cost()) {
            rest.ends.insert(rest.ends.begin(), end);
            best = std::move(rest);
        }
    }
    return best;
}

bool isOverlapping(const std::vector<AxisLabels::Label>& labels) {
    return std::adjacent_find(labels.begin(), labels.end(), [](const auto& left, const auto& right) {
               return left.rect.right() + labelGap > right.rect.left();
           }) != labels.end();
}

}  // namespace

AxisLabels::AxisLabels(const QFontMetricsF& metrics, Text text)
    : m_Metrics(metrics), m_Text(std::move(text)) {}

std::vector<AxisLabels::Label> AxisLabels::horizontal(const Axis& axis, qreal left, qreal right,
                                                      int maximumLines) const {
    std::vector<Label> best;
    for (int lines = 1; lines <= maximumLines && best.size() < enoughLabels; ++lines) {
        std::vector<Label> labels = withLines(axis, left, right, lines);
        if (lines == 1 || labels.size() > best.size()) {
            best = std::move(labels);
        }
    }
    return best;
}

/** Thinned out by the widths of the first and the last label, and more where those between them are wider. */
std::vector<AxisLabels::Label> AxisLabels::withLines(const Axis& axis, qreal left, qreal right,
                                                     int lines) const {
    const qreal width = std::max(label(axis.from, lines, right - left).rect.width(),
                                 label(axis.to, lines, right - left).rect.width());
    const double perPixel = axis.valuesPerPixel();
    double step = GraphicMesh::coarsened(axis.cell, width * perPixel, GraphicMesh::Unit::Seconds);
    std::vector<Label> labels = placed(axis, step, left, right, lines);
    while (isOverlapping(labels)) {
        step = GraphicMesh::coarsened(axis.cell, step * 1.01, GraphicMesh::Unit::Seconds);
        labels = placed(axis, step, left, right, lines);
    }
    return labels;
}

std::vector<AxisLabels::Label> AxisLabels::placed(const Axis& axis, double step, qreal left, qreal right,
                                                  int lines) const {
    std::vector<Label> labels;
    for (const double value : GraphicMesh::lines(axis.from, axis.to, step)) {
        Label added = label(value, lines, right - left);
        const qreal width = added.rect.width();
        added.rect.moveLeft(std::clamp(axis.pixel(value) - width / 2, left, std::max(left, right - width)));
        if (!added.text.isEmpty()) {
            labels.push_back(added);
        }
    }
    return labels;
}

std::vector<AxisLabels::Label> AxisLabels::vertical(const Axis& axis, qreal width) const {
    std::vector<Label> labels;
    const double minimum = (m_Metrics.height() + lineGap) * axis.valuesPerPixel();
    double step = GraphicMesh::coarsened(axis.cell, minimum, GraphicMesh::Unit::Values);
    while (GraphicMesh::lines(axis.from, axis.to, step).size() < enoughForAScale && step / 2 >= minimum) {
        step /= 2;
    }
    for (const double value : GraphicMesh::lines(axis.from, axis.to, step)) {
        Label added = label(value, 1, width);
        added.rect.moveRight(0);
        added.rect.moveTop(axis.pixel(value) - added.rect.height() / 2);
        if (!added.text.isEmpty()) {
            labels.push_back(added);
        }
    }
    return labels;
}

AxisLabels::Label AxisLabels::label(double value, int lines, qreal width) const {
    QStringList texts = wrapped(m_Text(value), lines).split('\n');
    for (QString& text : texts) {
        text = m_Metrics.elidedText(text, Qt::ElideRight, width);
    }
    const QString text = texts.join('\n');
    return {value, QRectF(0, 0, textWidth(text), m_Metrics.lineSpacing() * texts.size()), text};
}

QString AxisLabels::wrapped(const QString& text, int lines) const {
    const QString trimmed = text.trimmed();
    if (lines <= 1 || trimmed.isEmpty()) {
        return trimmed;
    }
    const std::vector<Piece> parts = pieces(trimmed, m_Metrics);
    QStringList result;
    std::size_t begin = 0;
    for (const std::size_t end : filling(parts, 0, lines).ends) {
        QString line;
        for (; begin < end; ++begin) {
            line += parts[begin].text;
        }
        result.append(line.trimmed());
    }
    return result.join('\n');
}

qreal AxisLabels::textWidth(const QString& text) const {
    qreal widest = 0;
    for (const QString& line : text.split('\n')) {
        widest = std::max(widest, m_Metrics.horizontalAdvance(line));
    }
    return std::ceil(widest);
}

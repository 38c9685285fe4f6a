// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/ColumnFitter.h"

#include <QDataStream>
#include <QEvent>
#include <QHeaderView>
#include <QIODevice>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <algorithm>
#include <numeric>

#include "controls/TableView.h"

namespace {

constexpr quint32 savedVersion = 1;

}  // namespace

ColumnFitter::ColumnFitter(TableView* table, const std::vector<Column>& columns)
    : QObject(table), m_Table(table), m_Header(table->horizontalHeader()) {
    for (const Column& column : columns) {
        m_Shares.push_back({column, column.stretch});
    }
    Q_ASSERT(m_Header->count() == static_cast<int>(m_Shares.size()));
    m_Header->setSectionsMovable(true);
    m_Header->setSectionResizeMode(QHeaderView::Interactive);
    m_Header->viewport()->installEventFilter(this);
    connect(m_Header, &QHeaderView::sectionResized, this, &ColumnFitter::sectionResized);
    connect(table, &TableView::widthChanged, this, [this] { fit(); });
    fit();
}

bool ColumnFitter::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
            m_IsButtonDown = true;
            break;
        case QEvent::MouseButtonRelease:
            m_IsButtonDown = false;
            if (m_IsDragging) {
                endDrag();
            }
            break;
        default:
            break;
    }
    return QObject::eventFilter(watched, event);
}

void ColumnFitter::sectionResized(int column, int /*oldWidth*/, int width) {
    if (m_IsFitting || !m_IsButtonDown) {
        return;
    }
    m_IsDragging = true;
    m_Table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);  // it would come and go under the mouse
    m_Shares[column].chosenWidth = width;
    fit(m_Header->visualIndex(column) + 1);
}

void ColumnFitter::endDrag() {
    m_IsDragging = false;
    for (std::size_t column = 0; column < m_Shares.size(); ++column) {
        if (m_Shares[column].weight > 0) {
            m_Shares[column].weight = std::max(m_Header->sectionSize(static_cast<int>(column)), 1);
        }
    }
    fit();
    m_Table->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
}

void ColumnFitter::fit(int firstVisual) {
    const QScopedValueRollback fitting(m_IsFitting, true);
    int room = m_Table->viewport()->width();
    std::vector<int> free;
    for (int visual = 0; visual < m_Header->count(); ++visual) {
        const int column = m_Header->logicalIndex(visual);
        if (visual >= firstVisual && isFree(column)) {
            free.push_back(column);
            continue;
        }
        const Share& share = m_Shares[column];
        if (visual >= firstVisual) {
            m_Header->resizeSection(column,
                                    share.chosenWidth > 0 ? share.chosenWidth : share.column.preferredWidth);
        }
        room -= m_Header->sectionSize(column);
    }
    const std::vector<int> shared = widths(room, free);
    for (std::size_t i = 0; i < free.size(); ++i) {
        m_Header->resizeSection(free[i], shared[i]);
    }
}

/**
 * What `columns` get of `room` pixels. As long as a share is out of its bounds, those that miss on the side
 * that prevails get their bound, and the others share what remains.
 */
std::vector<int> ColumnFitter::widths(int room, const std::vector<int>& columns) const {
    std::vector<int> result(columns.size(), 0);
    std::vector<std::size_t> open(columns.size());
    std::iota(open.begin(), open.end(), std::size_t{0});
    const auto share = [&](std::size_t i) -> const Share& { return m_Shares[columns[i]]; };
    while (!open.empty()) {
        std::int64_t weights = 0;
        for (const std::size_t i : open) {
            weights += share(i).weight;
        }
        int miss = 0;
        int rest = room;
        std::vector<int> wanted(columns.size(), 0);
        for (const std::size_t i : open) {
            wanted[i] = static_cast<int>(rest * std::int64_t{share(i).weight} / weights);
            rest -= wanted[i];
            weights -= share(i).weight;
            const auto& [minimum, maximum, stretch] = share(i).column;
            result[i] = std::clamp(wanted[i], minimum, std::max(minimum, maximum));
            miss += result[i] - wanted[i];
        }
        std::erase_if(open, [&](std::size_t i) {
            const bool isBound = miss == 0 || (miss > 0 ? result[i] > wanted[i] : result[i] < wanted[i]);
            room -= isBound ? result[i] : 0;
            return isBound;
        });
    }
    return result;
}

bool ColumnFitter::isFree(int column) const {
    return m_Shares[column].weight > 0 && m_Shares[column].chosenWidth == 0;
}

QByteArray ColumnFitter::save() const {
    QByteArray state;
    QDataStream stream(&state, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_0);
    stream << savedVersion << qint32(m_Shares.size());
    for (int column = 0; column < m_Header->count(); ++column) {
        const Share& share = m_Shares[column];
        stream << qint32(m_Header->visualIndex(column)) << qint32(share.weight) << qint32(share.chosenWidth);
    }
    return state;
}

bool ColumnFitter::restore(const QByteArray& state) {
    std::vector<Share> shares = m_Shares;
    std::vector<int> order(shares.size(), -1);
    if (!read(state, shares, order)) {
        return false;
    }
    m_Shares = std::move(shares);
    for (int visual = 0; visual < m_Header->count(); ++visual) {
        m_Header->moveSection(m_Header->visualIndex(order[visual]), visual);
    }
    fit();
    return true;
}

bool ColumnFitter::read(const QByteArray& state, std::vector<Share>& shares, std::vector<int>& order) {
    QDataStream stream(state);
    stream.setVersion(QDataStream::Qt_6_0);
    quint32 version = 0;
    qint32 count = 0;
    stream >> version >> count;
    if (version != savedVersion || count != static_cast<qint32>(shares.size())) {
        return false;
    }
    for (qint32 column = 0; column < count; ++column) {
        Share& share = shares[column];
        qint32 visual = -1;
        stream >> visual >> share.weight >> share.chosenWidth;
        const bool isPlace = visual >= 0 && visual < count && order[visual] < 0;
        const bool isWeight = share.weight <= unlimitedWidth &&
                              (share.column.stretch > 0 ? share.weight > 0 : share.weight == 0);
        const bool isWidth = share.chosenWidth >= 0 && share.chosenWidth <= unlimitedWidth;
        if (!isPlace || !isWeight || !isWidth) {
            return false;
        }
        order[visual] = column;
    }
    return stream.status() == QDataStream::Ok && stream.atEnd();
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/HistoryRangePage.h"

#include <QListWidget>
#include <QSignalBlocker>

#include "daemon/DaemonConnection.h"
#include "ui/charts/HistoryRangePresets.h"

HistoryRangePage::HistoryRangePage(const HistoryRangePickers::Picker& start,
                                   const HistoryRangePickers::Picker& end, QListWidget* presets)
    : m_Pickers(start, end), m_Presets(presets) {
    m_Presets->addItems(HistoryRangePresets::names());
    choosePreset(HistoryRangePresets::All);
    m_Presets->setCurrentRow(HistoryRangePresets::All);
    connect(&m_Pickers, &HistoryRangePickers::startTimeChanged, this, &HistoryRangePage::startTimeChanged);
    connect(&m_Pickers, &HistoryRangePickers::endTimeChanged, this, &HistoryRangePage::endTimeChanged);
    // Selected, not current: a list that gets the focus has a current item, which nobody chose.
    connect(m_Presets, &QListWidget::itemSelectionChanged, this, &HistoryRangePage::presetSelected);
    connect(m_Presets, &QListWidget::itemClicked, this, &HistoryRangePage::presetSelected);
}

void HistoryRangePage::open() {
    m_StartBefore = startTime();
    m_EndBefore = endTime();
    m_PresetBefore = selectedPreset();
    presetSelected();
    m_Presets->setFocus();
}

void HistoryRangePage::restore() {
    const QSignalBlocker blocker(m_Presets);
    m_Pickers.setRange(m_StartBefore, m_EndBefore);
    m_Presets->setCurrentRow(m_PresetBefore);
    if (m_PresetBefore < 0) {
        m_Presets->clearSelection();
    }
}

void HistoryRangePage::startTimeChanged() {
    m_Presets->clearSelection();
    m_Pickers.limitEndTime();
}

void HistoryRangePage::endTimeChanged() {
    m_Presets->clearSelection();
    m_Pickers.limitStartTime();
}

void HistoryRangePage::presetSelected() {
    const int preset = selectedPreset();
    if (preset >= 0) {
        choosePreset(preset);
    }
}

void HistoryRangePage::choosePreset(int preset) {
    const auto totals = preset == HistoryRangePresets::All
                            ? DaemonConnection::sharedConnection()->totalStatisticInfo()
                            : nullptr;
    const auto [start, end] = HistoryRangePresets::range(
        preset, QDateTime::currentDateTime(), totals != nullptr ? totals->startTime() : QDateTime());
    m_Pickers.setRange(start, end);
}

int HistoryRangePage::selectedPreset() const {
    const QModelIndexList rows = m_Presets->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/StoreBatch.h"

#include <utility>

namespace service {

StoreBatch::StoreBatch(Store& store)
    : m_Store(store), m_Transaction(*store.m_Database), m_Progress(store.m_Progress) {
    if (!m_Transaction.IsActive()) {
        fail();
    }
}

bool StoreBatch::append(const LedgerChanges& changes) {
    if (!m_Failed && !m_Store.write(changes, m_Progress)) {
        fail();
    }
    return !m_Failed;
}

void StoreBatch::setGrains(const SeriesGrains& grains) {
    m_Progress.grains = grains;
}

bool StoreBatch::commit() {
    if (!m_Failed && !m_Transaction.Commit()) {
        fail();
    }
    if (m_Failed) {
        return false;
    }
    if (m_Progress.grains != m_Store.m_Progress.grains) {
        m_Store.m_Thinner.restart();
    }
    m_Store.m_Progress = std::move(m_Progress);
    return true;
}

void StoreBatch::fail() {
    m_Failed = true;
    m_Store.fail();
}

}  // namespace service

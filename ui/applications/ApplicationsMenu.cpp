// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/applications/ApplicationsMenu.h"

#include <QMenu>

#include "controls/TypedMenuSearch.h"
#include "daemon/ApplicationsIterator.h"
#include "ui/applications/PlainText.h"

namespace {

constexpr std::int32_t sortByName = 0;

}  // namespace

void ApplicationsMenu::fill(QMenu& menu, const Filter& isOffered) {
    menu.clear();
    TypedMenuSearch::install(menu);
    const auto applications = ApplicationsIterator::iterator();
    applications->setSortField(sortByName);
    for (const auto& application : applications->prefetch(0, applications->countApplications())) {
        if (application != nullptr && application->id() > 0 && isOffered(*application)) {
            QAction* item = menu.addAction(application->icon(), PlainText::menuItem(application->name()));
            item->setData(application->id());
        }
    }
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicViewAccessible.h"

#include "controls/chart/GraphicView.h"

GraphicViewAccessible::GraphicViewAccessible(GraphicView* view)
    : QAccessibleWidget(view, QAccessible::Chart) {}

void GraphicViewAccessible::install() {
    QAccessible::installFactory([](const QString& /*name*/, QObject* object) -> QAccessibleInterface* {
        auto* view = qobject_cast<GraphicView*>(object);
        return view != nullptr ? new GraphicViewAccessible(view) : nullptr;
    });
}

QString GraphicViewAccessible::text(QAccessible::Text kind) const {
    const QString given = QAccessibleWidget::text(kind);
    const bool isOurs = kind == QAccessible::Description && given.isEmpty();
    return isOurs ? qobject_cast<const GraphicView*>(object())->summary() : given;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicScene.h"

#include "controls/chart/GraphicViewDelegate.h"

QString GraphicScene::labelText(double value, int axe) const {
    return delegate != nullptr ? delegate->axeValueToString(static_cast<float>(value), axe) : QString();
}

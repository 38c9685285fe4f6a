// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>

/** What a chart asks its owner for. A subclass implements what it wants. Axes: 0 is X, 1 is Y. Main thread. */
class GraphicViewDelegate {
  public:
    virtual ~GraphicViewDelegate() = default;

    /** Text of an axis label. */
    virtual QString axeValueToString(float /*value*/, int /*axe*/) { return {}; }

    /** Text for the read-out under the pointer, where more than the axis label's can be said. */
    virtual QString readOutValueToString(float value, int axe) { return axeValueToString(value, axe); }

    /** What the lines' values are counted in, if they have a unit: the exported points then name it. */
    virtual QString valueUnit() { return {}; }

    /** The instant that `x` stands for, if X is time: the exported points then have dates. */
    virtual QDateTime dateAtX(float /*x*/) { return {}; }
};

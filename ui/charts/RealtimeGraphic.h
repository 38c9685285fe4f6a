// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>
#include <cstdint>
#include <memory>
#include <vector>

#include "controls/chart/GraphicViewDelegate.h"
#include "daemon/ApplicationInfo.h"

class GraphicView;
class ToolWindow;

/**
 * A small window that floats above all others and shows how many bytes an application has received and sent in each of
 * the last 120 seconds. It asks the daemon once a second for as long as it is open, whatever the application does.
 *
 * The list of open charts owns them: one that is closed, by whomever, is gone unless somebody else still holds it. All
 * must be closed before the QApplication ends. Main thread, which waits for the daemon's answers.
 */
class RealtimeGraphic : public std::enable_shared_from_this<RealtimeGraphic>, private GraphicViewDelegate {
  public:
    /**
     * A new chart in the list, with its first point but not yet shown, also when there is one for this application
     * already. One for an application that the daemon does not know has no name and stays at zero.
     */
    static std::shared_ptr<RealtimeGraphic> graphicWithApplicationId(std::int32_t applicationId);

    /** The first one opened that has a record with this id, shown or not; null when there is none. */
    static std::shared_ptr<RealtimeGraphic> findVisibleGraphicFromApplicationId(std::int32_t applicationId);
    static bool isGraphicForAplicationIdExist(std::int32_t applicationId);

    static void closeAllGraphics();

    /** The open charts in the order in which they were opened. */
    static const std::vector<std::shared_ptr<RealtimeGraphic>>& graphicsList();

    /** Its window goes when control returns to the event loop: it may be closing right now. */
    ~RealtimeGraphic() override;

    RealtimeGraphic(const RealtimeGraphic&) = delete;
    RealtimeGraphic& operator=(const RealtimeGraphic&) = delete;

    /** As of the last poll; null once the daemon has failed to give it. */
    std::shared_ptr<const ApplicationInfo> applicationInfo() const { return m_ApplicationInfo; }

    /** Without a record nothing is asked: it stays lost. */
    void updateApplicationInfo();

    void show();
    void close();

    /** A poll: asks the daemon and draws the second that has passed. The timer calls it. */
    void onTimer();

    QString axeValueToString(float value, int axe) override;
    QString readOutValueToString(float value, int axe) override;
    QString valueUnit() override;

  private:
    explicit RealtimeGraphic(std::int32_t applicationId);
    static std::vector<std::shared_ptr<RealtimeGraphic>>& mutableGraphicsList();

    void awakeFromNib();
    void setupGraphic();
    void windowWillClose();
    void scroll();
    void raisePeak(double bytes);

    ToolWindow* m_GraphicWindow = nullptr;
    GraphicView* m_Graphic = nullptr;  ///< in the window
    std::shared_ptr<const ApplicationInfo> m_ApplicationInfo;
    QTimer m_Timer;
    double m_LastReceivedBytes = 0;  ///< in all, at the last poll
    double m_LastSendedBytes = 0;
    double m_GraphicPeak = -1;  ///< most bytes in a second so far; the first poll always sets the scale
    std::int64_t m_SecondsCounter = 0;  ///< polls until now; X of the next point
};

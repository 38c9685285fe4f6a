// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVariantAnimation>
#include <QWidget>

/**
 * Stands where something is that is not ready yet, says calmly what is being done, and fades away when it is. At once
 * where the style's animations are switched off. It takes no mouse events. Main thread.
 */
class WaitingCover : public QWidget {
    Q_OBJECT

  public:
    explicit WaitingCover(QWidget* parent = nullptr);

    /** Covers; `detail` stands below `title`, smaller. */
    void cover(const QString& title, const QString& detail);
    void uncover();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void drawTexts(QPainter& painter) const;

    QVariantAnimation m_Fade;  ///< opacity
    QString m_Title;
    QString m_Detail;
};

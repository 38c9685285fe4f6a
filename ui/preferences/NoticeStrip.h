// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QLabel;

/** A warning that stands calmly in a window: an icon and a sentence on a tinted ground. Plain text. */
class NoticeStrip : public QWidget {
    Q_OBJECT

  public:
    explicit NoticeStrip(QWidget* parent = nullptr);

    void setText(const QString& text);

  protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void updateIcon();

    QLabel* m_Icon;
    QLabel* m_Text;
};

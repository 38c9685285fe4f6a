// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

/** A sentence in the middle of a chart, about the chart as a whole. It takes no mouse events. Main thread. */
class GraphicNotice : public QWidget {
    Q_OBJECT

  public:
    explicit GraphicNotice(QWidget* parent);

    /** Hides for an empty text. */
    void setText(const QString& text);
    QString text() const { return m_Text; }

    /** Goes to the middle of its parent. */
    void place();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    QString m_Text;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class ElidedLabel;

/** A warning that stands calmly in a window: a sign, a sentence and a line that says what it is about. Plain text. */
class NoticeStrip : public QWidget {
    Q_OBJECT

  public:
    explicit NoticeStrip(QWidget* parent = nullptr);

    void setText(const QString& sentence, const QString& subject);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    ElidedLabel* m_Sentence;
    ElidedLabel* m_Subject;
};

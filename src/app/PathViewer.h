// Shows the last part of a path.
#pragma once

#include <QString>
#include <QWidget>

class QPainter;

namespace deckmate {

/// The last component of its text, in black, vertically centred. A name that fits stands at the
/// left edge; of one that is too wide the end is seen. Thread: main.
class PathViewer : public QWidget {
public:
    explicit PathViewer(QWidget* parent = nullptr);
    explicit PathViewer(const QRect& frame, QWidget* parent = nullptr);

    const QString& text() const { return text_; }
    void setText(const QString& text);

    void drawRect(QPainter& painter);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void initUI();

    QString text_;
};

/// What follows the last slash, if one is followed by anything; slashes at the end don't count.
/// "/" for a path of nothing but slashes.
QString lastPathComponent(const QString& path);

} // namespace deckmate

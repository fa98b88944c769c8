// A picture of the application's in a window.
#pragma once

#include <QLabel>
#include <QSize>
#include <QString>

namespace deckmate {

/// Sharp on every screen it comes to; faded while disabled. Thread: main.
class ImageView : public QLabel {
public:
    /// `size` in points, of which it takes no more and no less. `description` is what a person who
    /// can't see it is told; none for decoration.
    ImageView(QString name, const QSize& size, const QString& description = {},
              QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString name_;
};

} // namespace deckmate

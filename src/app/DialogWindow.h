// What the application's modal windows have in common.
#pragma once

#include <QDialog>
#include <QRectF>
#include <QString>

namespace deckmate {

/// A modal window of fixed size, centred on the window that presents it. Escape and the title bar
/// close it.
///
///     AboutVC about(&window);
///     about.setParentFrame(window.geometry());
///     about.exec();
///
/// Thread: main.
class DialogWindow : public QDialog {
public:
    explicit DialogWindow(QWidget* parent = nullptr);

    /// The presenting window's place on the screen, without its decoration; all zero for none.
    const QRectF& parentFrame() const { return parentFrame_; }
    void setParentFrame(const QRectF& frame) { parentFrame_ = frame; }

    void setVisible(bool isVisible) override;

protected:
    /// Called each time before the window comes up.
    virtual void viewWillAppear() {}
    /// No maximise button, no resizing, the application's background, in the middle of
    /// parentFrame().
    void setUpWindow(const QString& title);
    /// Closes the window, as Escape does.
    void dismissController();

private:
    void centre();

    QRectF parentFrame_;
};

} // namespace deckmate

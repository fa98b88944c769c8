// The window that tells what this program is.
#pragma once

#include "app/DialogWindow.h"

#include <QString>

class QLabel;

namespace deckmate {

class ImageView;

class AboutVC : public DialogWindow {
public:
    explicit AboutVC(QWidget* parent = nullptr);

    const QString& versionString() const { return versionString_; }
    void setVersionString(const QString& text) { versionString_ = text; }

protected:
    void viewWillAppear() override;

private:
    void viewDidLoad();
    void initWindowUI();

    QString versionString_;
    QLabel* version = nullptr;
    ImageView* imgORLO = nullptr;
};

} // namespace deckmate

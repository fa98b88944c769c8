// The window that shows a new user the four steps from a recording to a file.
#pragma once

#include "app/DialogWindow.h"

#include <QString>

class QCheckBox;

namespace deckmate {

/// Comes up by itself until the user ticks its box, and for each new version again. The box stores
/// the version under "UD_DO_NOT_SHOW_AGAIN"; leaving it empty, or leaving by Escape, stores nothing
/// and clears nothing.
class IntroductionVC : public DialogWindow {
public:
    explicit IntroductionVC(QWidget* parent = nullptr);

    /// Whether the user asked for it; then there is no box.
    bool fromMenu() const { return fromMenu_; }
    void setFromMenu(bool isFromMenu) { fromMenu_ = isFromMenu; }
    /// The running version.
    const QString& versionString() const { return versionString_; }
    void setVersionString(const QString& text) { versionString_ = text; }

    void btnOK_Click();

protected:
    void viewWillAppear() override;

private:
    void viewDidLoad();
    void initWindowUI();

    bool fromMenu_ = false;
    QString versionString_;
    QCheckBox* toggleShow = nullptr;
};

} // namespace deckmate

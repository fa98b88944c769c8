// The window that tells what to check while no recorder is connected.
#pragma once

#include "app/DialogWindow.h"

namespace deckmate {

class NodeviceVC : public DialogWindow {
public:
    explicit NodeviceVC(QWidget* parent = nullptr);

    void btnOK_Click();

protected:
    void viewWillAppear() override;

private:
    void viewDidLoad();
    void initWindowUI();
};

} // namespace deckmate

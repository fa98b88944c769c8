// The export sheet over a window, with a recording in a folder of its own.
#pragma once

#include "app/ExportVC.h"
#include "desktop/app/Answers.h"
#include "desktop/support/Desktop.h"
#include "support/Bytes.h"
#include "support/LogLines.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QString>
#include <QWidget>

namespace deckmate::test {

/// How often the event has been fired since the program began, and what was so at the last time.
struct ReloadEvents {
    int count = 0;
    bool wasSheetUp = false;
};

class ExportSheet : public testing::Test {
protected:
    static void SetUpTestSuite();

    explicit ExportSheet(const std::filesystem::path& name = "take.wav");

    /// Two frames of left and right: 0.5 and -0.25, 0.125 and 0.
    static Bytes quietSamples() { return pcm24({0x400000, -0x200000, 0x100000, 0}); }
    static constexpr std::size_t headSize = 748; ///< of an exported file, before its samples

    ReloadEvents& events();
    int eventsFired() { return events().count - eventsBefore_; }
    /// Makes an alert note its text instead of coming up.
    void noteAlerts();
    void open(Bytes samples);
    void show();

    template <class Kind>
    Kind* find(const char* name) const {
        return sheet->findChild<Kind*>(name);
    }
    void clickOn(QAbstractButton* button) const;
    void clickOn(const char* name) const { clickOn(find<QAbstractButton>(name)); }
    static QAbstractButton* buttonOf(QWidget& window, const QString& text);
    static QLineEdit* nameOf(QWidget& dialog) {
        return dialog.findChild<QLineEdit*>("fileNameEdit");
    }
    /// A key for a dialog, as soon as it has the keyboard: after a question it gets it back.
    static void tapIn(QWidget& dialog, const char* key);
    /// Gives the save dialog a name and confirms it.
    static void answer(QWidget& dialog, const QString& name);
    Bytes samplesOf(const std::filesystem::path& path) const;
    static unsigned bitsOf(const std::filesystem::path& path);
    /// The log without the event's line.
    std::vector<std::string> choicesLogged() const;

    Desktop& desktop = Desktop::get();
    TemporaryFolder folder;
    LogLines log;
    Bytes original;
    std::filesystem::path source;
    std::shared_ptr<Export> recording_;
    QWidget window;
    std::unique_ptr<ExportVC> sheet;
    Answers answers;
    std::vector<std::string> alerts;

private:
    int eventsBefore_ = 0;
};

} // namespace deckmate::test

// What holds for the main window, whatever was done to it.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <QImage>
#include <QObject>
#include <QString>
#include <QStringList>

class QAbstractButton;
class QLabel;
class QMainWindow;

namespace deckmate::test {

/// Sees the window from outside: views by name, and the sound output. Thread: main.
class WindowRules : public QObject {
public:
    explicit WindowRules(QMainWindow& window);

    /// Rules that don't hold now, in words.
    std::vector<std::string> broken();
    /// Of a user who hasn't done anything since broken(). `isRecorderIn`: whether one is plugged
    /// in.
    std::vector<std::string> brokenSince();
    /// The recorder is, or isn't, plugged in.
    void setRecorderIn(bool isIn) { isRecorderIn_ = isIn; }
    /// The mouse button is down, or isn't.
    void setHeld(bool isHeld) { isHeld_ = isHeld; }
    /// Name of the folder that was opened last.
    void setFolder(const QString& name) { folder_ = name; }

    bool isPlaying() const;
    bool isOpen() const;

protected:
    /// Counts what the two timers of the display do.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void expect(bool holds, const std::string& rule);
    void checkRecording();
    void checkStereo();
    void checkTime();
    void checkHands();
    void checkPlaying();
    void checkVolume();
    void checkRecorder();
    void checkNoRecorder();
    void checkBrowser();
    bool shows(const char* button, const char* image);
    template <class View>
    View& view(const char* name) const;
    QString text(const char* label) const;
    QStringList rows() const;
    std::optional<QString> selected() const;

    QMainWindow& window_;
    std::vector<std::string> broken_;
    std::map<std::string, QImage> images_;
    QString folder_;
    bool isRecorderIn_ = false;
    bool isHeld_ = false;
    unsigned meterTicks_ = 0;
    unsigned ticks_ = 0; ///< of both
    // As it was at the end of broken().
    bool wasPlaying_ = false;
    std::optional<QString> wasSelected_;
    std::chrono::steady_clock::time_point then_;
};

} // namespace deckmate::test

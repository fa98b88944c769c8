// Answers to the modal windows that come up in the middle of an action.
#pragma once

#include <deque>
#include <functional>
#include <vector>

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QWidget>

namespace deckmate::test {

/// Each answer waits for a modal window of its name, in the order in which they were given, and is
/// called when it is on the screen and has the keyboard. It has to close the window, unless one of
/// the next answers does so from inside it.
class Answers {
public:
    using Answer = std::function<void(QWidget& window)>;

    Answers();
    /// Fails the test if a window never came up.
    ~Answers();
    Answers(const Answers&) = delete;
    Answers& operator=(const Answers&) = delete;
    Answers(Answers&&) = delete;
    Answers& operator=(Answers&&) = delete;

    void add(const QString& name, Answer answer);

private:
    struct Expected {
        QString name;
        Answer answer;
    };

    void lookLater();
    void look();

    QObject context_; ///< without it, no more looking
    QElapsedTimer waiting_;
    std::deque<Expected> expected_;
    std::vector<const QWidget*> beingAnswered_;
};

} // namespace deckmate::test

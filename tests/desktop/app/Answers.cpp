#include "desktop/app/Answers.h"

#include "desktop/support/Desktop.h"

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <utility>

#include <QApplication>
#include <QPointer>
#include <QTimer>
#include <QWindow>

namespace deckmate::test {

namespace {

constexpr std::chrono::milliseconds askingInterval{5};

bool isUp(const QWidget& window) {
    return window.windowHandle() != nullptr && window.windowHandle()->isExposed() &&
           window.isActiveWindow();
}

} // namespace

Answers::Answers() {
    waiting_.start();
    lookLater();
}

Answers::~Answers() {
    for (const Expected& missing : expected_) {
        ADD_FAILURE() << "no window came up: " << missing.name.toStdString();
    }
}

void Answers::add(const QString& name, Answer answer) {
    expected_.push_back({name, std::move(answer)});
    waiting_.restart();
}

// Not by a repeating timer, which waits until it has been dealt with: an answer may need another.
void Answers::lookLater() {
    QTimer::singleShot(askingInterval, &context_, [this] {
        lookLater();
        look();
    });
}

void Answers::look() {
    const QPointer<QWidget> window = QApplication::activeModalWidget();
    if (window == nullptr) {
        return;
    }
    if (waiting_.hasExpired(std::chrono::milliseconds(aWhile).count())) {
        ADD_FAILURE() << "a window waits for ever: " << window->objectName().toStdString();
        window->close();
        return;
    }
    if (expected_.empty() || window->objectName() != expected_.front().name || !isUp(*window) ||
        std::find(beingAnswered_.begin(), beingAnswered_.end(), window) != beingAnswered_.end()) {
        return;
    }
    const Answer answer = std::move(expected_.front().answer);
    expected_.pop_front();
    beingAnswered_.push_back(window);
    Desktop::get().settle();
    answer(*window);
    beingAnswered_.pop_back();
    waiting_.restart();
}

} // namespace deckmate::test

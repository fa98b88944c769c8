#include "platform/qt/QtUserDefaults.h"

#include <cstdlib>
#include <mutex>
#include <system_error>

#include <QByteArray>
#include <QFile>
#include <QMetaType>
#include <QSettings>
#include <QString>
#include <QVariant>

namespace deckmate {

namespace {

/// The folder that a variable of the environment names; empty for none. A relative one would change
/// with the working folder, so it doesn't count.
std::filesystem::path folderIn(const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && *value == '/' ? value : "";
}

/// Empty when the environment names no folder.
std::filesystem::path pathInConfiguration() {
    constexpr auto name = "orlo-h8-deckmate.ini";
    if (const auto configuration = folderIn("XDG_CONFIG_HOME"); !configuration.empty()) {
        return configuration / name;
    }
    const auto home = folderIn("HOME");
    return home.empty() ? home : home / ".config" / name;
}

/// NO for a pipe, on which reading would wait for ever, and for a device, which saving would
/// replace by a file.
bool mayHoldSettings(const std::filesystem::path& path) {
    std::error_code ignored;
    const auto type = std::filesystem::status(path, ignored).type();
    return !path.empty() && (type == std::filesystem::file_type::regular ||
                             type == std::filesystem::file_type::not_found);
}

/// A name that QSettings takes for one key whatever its bytes: not for a group, not for none.
QString nameOf(std::string_view key) {
    const QByteArray bytes(key.data(), static_cast<qsizetype>(key.size()));
    return key.empty() ? QStringLiteral("%") : QString::fromLatin1(bytes.toPercentEncoding());
}

/// Whether the bytes come back when they are stored as a text.
bool isPlain(std::string_view value) {
    for (const char character : value) {
        if (character < 0x20 || character > 0x7e) {
            return false;
        }
    }
    return !value.empty();
}

std::optional<std::string> textIn(const QSettings& settings, std::string_view key) {
    const QVariant value = settings.value(nameOf(key));
    switch (value.typeId()) {
    case QMetaType::QByteArray:
        return value.toByteArray().toStdString();
    case QMetaType::QString:
        return value.toString().toStdString();
    default: // a list, or something that this program never wrote
        return std::nullopt;
    }
}

} // namespace

struct QtUserDefaults::Impl {
    mutable std::mutex lock;
    std::optional<QSettings> settings;
};

QtUserDefaults::QtUserDefaults() : QtUserDefaults(pathInConfiguration()) {}

QtUserDefaults::QtUserDefaults(const std::filesystem::path& path)
    : impl_(std::make_unique<Impl>()) {
    if (mayHoldSettings(path)) {
        impl_->settings.emplace(QFile::decodeName(path.c_str()), QSettings::IniFormat);
    }
}

QtUserDefaults::~QtUserDefaults() = default;

std::optional<std::string> QtUserDefaults::stringForKey(std::string_view key) const {
    const std::lock_guard guard(impl_->lock);
    return impl_->settings ? textIn(*impl_->settings, key) : std::nullopt;
}

void QtUserDefaults::setString(std::string_view value, std::string_view key) {
    const std::lock_guard guard(impl_->lock);
    if (!impl_->settings) {
        return;
    }
    // Saving waits for the disk, which the start of every session has no need of.
    impl_->settings->sync();
    if (textIn(*impl_->settings, key) == value) {
        return;
    }
    const QByteArray bytes(value.data(), static_cast<qsizetype>(value.size()));
    impl_->settings->setValue(nameOf(key), isPlain(value) ? QVariant(QString::fromLatin1(bytes))
                                                          : QVariant(bytes));
    impl_->settings->sync();
}

} // namespace deckmate

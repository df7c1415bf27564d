// Message boxes show at most 79 characters of a title and of a text, as they always have.
#pragma once

#include <QString>
#include <string_view>

namespace quarvel {

inline constexpr int kMessageLength = 79;

inline QString cutTo79(const QString& text) { return text.left(kMessageLength); }
inline QString cutTo79(const char* text) { return cutTo79(QString::fromUtf8(text)); }
inline QString cutTo79(std::string_view text) {
  return cutTo79(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
}

}  // namespace quarvel

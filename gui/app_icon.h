// The program's window icon, drawn at start: a diffraction pattern with three peaks.
#pragma once

#include <QIcon>

namespace quarvel {

QIcon appIcon();

}  // namespace quarvel

// A synthetic pattern for looking at the program before any file is at hand: a few Gaussian
// reflections on a falling background with counting noise, from 5 to 80 degrees 2θ, with the
// peak list and reflection tick marks filled so that every plot layer shows.
#pragma once

namespace quarvel {

class Session;

// Puts the pattern into slot 1 and runs the steps that follow a load (axis table, pattern
// menus, refresh), without touching the recent-file list.
void loadDemoPattern(Session& session);

}  // namespace quarvel

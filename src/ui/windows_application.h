// What every program with our windows does once at its start: style, names, fonts.
#pragma once

namespace corvane::ui {

// Once, right after the application object was made.
void prepareApplication();

// For programs that draw pictures: no display is asked for. Before the application object is made.
void drawWithoutDisplay();

}  // namespace corvane::ui

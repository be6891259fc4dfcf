// The windows of the control in another program, found from outside by the fixed identifiers of the
// control's children.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace rdv {

// A point of the screen, in pixels.
using ScreenPoint = POINT;

// The child of that identifier beside the line grid of the first program that shows one.
HWND FindControlWindow(int id);

// The middle of a cell, or none when there is no such row, column or part of it on screen.
// ROW and COLUMN count from 1.
std::optional<ScreenPoint> MiddleOfCell(HWND grid, int row, int column);

// What a cell shows, up to 259 characters; none when there is no such row or column.
std::optional<std::wstring> TextOfCell(HWND grid, int row, int column);

// The middle of an entry of the list that is dropped down now, by its whole text.
std::optional<ScreenPoint> MiddleOfDroppedEntry(const wchar_t* text);

// The middle of a window that can be seen and takes input.
std::optional<ScreenPoint> MiddleOfWindow(HWND window);

}  // namespace rdv

// The rows that the grid shows for the configurations of the sample sites "plain" and "indexed",
// whose lines are the same. The captions of music-on-hold volumes are those of their settings file
// with all of them.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "rules/grid_columns.h"
#include "runtime/text.h"

namespace rdv::test {

using ExpectedRow = std::array<Text, kColumnCount>;
using ExpectedGrid = std::vector<ExpectedRow>;

inline ExpectedRow NotInstalledRow(TextView line) {
  return {u"1",   u"1",       u"999",           u"-1",  u"0",   u"1",   u"1",   u"0",
          u"0",   Text(line), u"Not Installed", u"N/A", u"N/A", u"N/A", u"N/A", u"N/A",
          u"N/A", u"N/A",     u"N/A",           u""};
}

inline Text LongLabel() {
  Text label;
  for (int part = 1; label.size() < 255; ++part) label += u"long label " + Decimal(part) + u"; ";
  label.resize(255);
  return label;
}

// The columns: line type, partition, node type, node number, volume, mode, mode number, impedance,
// soft stop; then line, line type, partition, starting node, volume, mode, NIS, EWT, impedance,
// soft stop, label.
inline ExpectedGrid Configuration1() {
  return {
      {u"6",        u"1",           u"1",
       u"3",        u"128",         u"1",
       u"2",        u"0",           u"0",  //
       u"1",        u"Hybrid Line", u"Reception",
       u"Menu 3",   u"High",        u"Ring=2",
       u"Disabled", u"Disabled",    u"Use Country Code",
       u"Disabled", u"Front desk"},
      {u"6",
       u"2",
       u"2",
       u"12",
       u"0",
       u"25",
       u"4",
       u"3",
       u"1",  //
       u"2",
       u"Hybrid Line",
       u"Sales",
       u"Queue 12",
       u"Low",
       u"Ring Count=4",
       u"5",
       u"30",
       u"Europe",
       u"Enabled",
       u"Sales \u2013 group A"},
      {u"6",
       u"4",
       u"4",
       u"7",
       u"128",
       u"13",
       u"1",
       u"1",
       u"0",  //
       u"3",
       u"Hybrid Line",
       u"Night service",
       u"Mailbox 7",
       u"High",
       u"Loop Start",
       u"Disabled",
       u"15",
       u"PBX 600 ohm",
       u"Disabled",
       u"O'Brien \"direct\""},
      {u"6",  u"1",           u"9",         u"10",          u"128",  u"2",
       u"10", u"5",           u"1",  //
       u"4",  u"Hybrid Line", u"Reception", u"Bulletin 10", u"High", u"Delay=10",
       u"99", u"Disabled",    u"China",     u"Enabled",     u""},
      {u"5",
       u"1",
       u"0",
       u"5",
       u"128",
       u"13",
       u"1",
       u"2",
       u"1",  //
       u"5",
       u"Impedance Line",
       u"Reception",
       u"Message 5",
       u"High",
       u"Loop Start",
       u"1",
       u"12",
       u"N/A",
       u"N/A",
       u"Tie line to annexe"},
      {u"5",        u"2",
       u"13",       u"2",
       u"3",        u"3",
       u"1",        u"0",
       u"0",  //
       u"6",        u"Impedance Line",
       u"Sales",    u"Test 2",
       u"3",        u"Instant",
       u"Disabled", u"Disabled",
       u"N/A",      u"N/A",
       u""},
      NotInstalledRow(u"7"),
      NotInstalledRow(u"8"),
      {u"8",   u"1",        u"11",        u"1",       u"2",           u"17",
       u"1",   u"0",        u"0",  //
       u"9",   u"MOH Line", u"Reception", u"Music 1", u"Low",         u"Continuous",
       u"N/A", u"N/A",      u"N/A",       u"N/A",     u"Hold music A"},
      {u"8",   u"2",        u"11",    u"2",       u"9",           u"18",
       u"1",   u"0",        u"0",  //
       u"11",  u"MOH Line", u"Sales", u"Music 2", u"Very high",   u"On Demand",
       u"N/A", u"N/A",      u"N/A",   u"N/A",     u"Hold music B"},
  };
}

// Nothing is stored for it: the default unit, as it is shown when it has just been made.
inline ExpectedGrid Configuration2() {
  ExpectedGrid grid;
  for (int number = 1; number <= 8; ++number) {
    const Text line = Decimal(number);
    grid.push_back({u"6",
                    u"1",
                    u"0",
                    line,
                    u"128",
                    u"1",
                    u"1",
                    u"0",
                    u"0",  //
                    line,
                    u"Hybrid Line",
                    u"Only one",
                    u"Message " + line,
                    u"High",
                    u"Ring=1",
                    u"Disabled",
                    u"Disabled",
                    u"Use Country Code",
                    u"Disabled",
                    u""});
  }
  for (const auto& [line, node] : {std::pair{u"9", u"1"}, std::pair{u"11", u"2"}}) {
    grid.push_back({u"8",
                    u"1",
                    u"11",
                    node,
                    u"6",
                    u"17",
                    u"1",
                    u"0",
                    u"0",  //
                    line,
                    u"MOH Line",
                    u"Only one",
                    Text(u"Music ") + node,
                    u"Above medium",
                    u"Continuous=1",
                    u"N/A",
                    u"N/A",
                    u"N/A",
                    u"N/A",
                    u""});
  }
  return grid;
}

inline ExpectedGrid Configuration3() {
  return {
      {u"6",        u"1",           u"0",           u"10",         u"0",     u"1",
       u"1",        u"1",           u"1",  //
       u"1",        u"Hybrid Line", u"North",       u"Message 10", u"Low",   u"Ring=1",
       u"Disabled", u"Disabled",    u"PBX 600 ohm", u"Enabled",    u"Line 1"},
      {u"6",        u"2",           u"1",
       u"20",       u"128",         u"26",
       u"2",        u"2",           u"0",  //
       u"2",        u"Hybrid Line", u"East",
       u"Menu 20",  u"High",        u"Tone Group=2",
       u"Disabled", u"Disabled",    u"North America",
       u"Disabled", u"Line 2"},
      {u"6",        u"3",           u"2",      u"30",       u"0",     u"33",
       u"9",        u"3",           u"1",  //
       u"3",        u"Hybrid Line", u"South",  u"Queue 30", u"Low",   u"Hunt Group=9",
       u"Disabled", u"Disabled",    u"Europe", u"Enabled",  u"Line 3"},
      {u"6",        u"4",           u"6",         u"40",          u"128",   u"24",
       u"1",        u"4",           u"0",  //
       u"4",        u"Hybrid Line", u"West",      u"Schedule 40", u"High",  u"Timed",
       u"Disabled", u"Disabled",    u"Australia", u"Disabled",    u"Line 4"},
      NotInstalledRow(u"5"),
      NotInstalledRow(u"6"),
      NotInstalledRow(u"7"),
      NotInstalledRow(u"8"),
      {u"8",
       u"1",
       u"11",
       u"1",
       u"6",
       u"17",
       u"1",
       u"0",
       u"0",  //
       u"9",
       u"MOH Line",
       u"North",
       u"Music 1",
       u"Above medium",
       u"Continuous",
       u"N/A",
       u"N/A",
       u"N/A",
       u"N/A",
       u""},
      {u"8",
       u"1",
       u"11",
       u"2",
       u"6",
       u"17",
       u"1",
       u"0",
       u"0",  //
       u"11",
       u"MOH Line",
       u"North",
       u"Music 2",
       u"Above medium",
       u"Continuous",
       u"N/A",
       u"N/A",
       u"N/A",
       u"N/A",
       u""},
  };
}

// Odd values: soft stop 2 is 0, the unknown line type 7 takes that of the line before, mode 28 is
// bare, impedance 9 is unknown, line 12 is the second half of a pair and stays out of sight.
inline ExpectedGrid Configuration4() {
  return {
      {u"6",        u"1",           u"1",
       u"1",        u"0",           u"1",
       u"0",        u"0",           u"0",  //
       u"1",        u"Hybrid Line", u"Ward A",
       u"Menu 1",   u"Low",         u"Ring",
       u"12",       u"250",         u"Use Country Code",
       u"Disabled", u"Soft stop 2"},
      {u"6",
       u"3",
       u"2",
       u"16",
       u"128",
       u"27",
       u"3",
       u"0",
       u"0",  //
       u"2",
       u"Hybrid Line",
       u"\u00C4rztehaus",
       u"Queue 16",
       u"High",
       u"Trunk Group=3",
       u"999",
       u"-1",
       u"Use Country Code",
       u"Disabled",
       u"Numbers in the options"},
      {u"6",
       u"1",
       u"0",
       u"2",
       u"0",
       u"13",
       u"1",
       u"0",
       u"0",  //
       u"3",
       u"Hybrid Line",
       u"Ward A",
       u"Message 2",
       u"Low",
       u"Loop Start",
       u"Disabled",
       u"Disabled",
       u"Use Country Code",
       u"Disabled",
       u"Unknown line type"},
      {u"6",           u"4",           u"8",
       u"10",          u"0",           u"28",
       u"6",           u"0",           u"0",  //
       u"4",           u"Hybrid Line", u"",
       u"Transfer 10", u"Low",         u"Channel",
       u"Disabled",    u"Disabled",    u"Use Country Code",
       u"Disabled",    u"Mode 28"},
      {u"6",        u"1",           u"0",       u"3",         u"3",          u"13",
       u"1",        u"9",           u"0",  //
       u"5",        u"Hybrid Line", u"Ward A",  u"Message 3", u"3",          u"Loop Start",
       u"Disabled", u"Disabled",    u"UNKNOWN", u"Disabled",  u"Impedance 9"},
      {u"5",        u"1",
       u"3",        u"999",
       u"128",      u"26",
       u"16",       u"9",
       u"0",  //
       u"6",        u"Impedance Line",
       u"Ward A",   u"Directory 999",
       u"High",     u"Tone Group=16",
       u"Disabled", u"Disabled",
       u"N/A",      u"N/A",
       LongLabel()},
      {u"6",
       u"3",
       u"6",
       u"4",
       u"0",
       u"2",
       u"1",
       u"0",
       u"0",  //
       u"7",
       u"Hybrid Line",
       u"\u00C4rztehaus",
       u"Schedule 4",
       u"Low",
       u"Delay=1",
       u"Disabled",
       u"Disabled",
       u"Use Country Code",
       u"Disabled",
       u"\u041B\u0438\u043D\u0438\u044F 7 \u2013 \u03B3\u03C1\u03B1\u03BC\u03BC\u03AE \u2013 "
       u"\u53D7\u4ED8"},
      {u"6",
       u"1",
       u"999",
       u"1",
       u"0",
       u"13",
       u"1",
       u"0",
       u"0",  //
       u"8",
       u"Hybrid Line",
       u"Ward A",
       u"None",
       u"Low",
       u"Loop Start",
       u"Disabled",
       u"Disabled",
       u"Use Country Code",
       u"Disabled",
       u"Without a starting node"},
      {u"8",   u"1",        u"11",     u"1",       u"5",         u"17",
       u"1",   u"0",        u"0",  //
       u"9",   u"MOH Line", u"Ward A", u"Music 1", u"Medium",    u"Continuous",
       u"N/A", u"N/A",      u"N/A",    u"N/A",     u"Hold music"},
  };
}

}  // namespace rdv::test

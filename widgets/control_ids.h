// Identifiers of the control's child windows (GetDlgCtrlID), by widget name. Fixed: programs that
// drive the control from outside find its windows by them.
#pragma once

namespace rdv::control_id {

inline constexpr int fraConfiguration = 100;  // holds the grid and the twelve in-place editors
inline constexpr int LVRDVLineConfig = 101;
inline constexpr int cmbPartition = 110;
inline constexpr int cmbStartingNodeName = 111;
inline constexpr int cmbStartingNodeNumber = 112;
inline constexpr int cmbVolume = 113;
inline constexpr int cmbModeType = 114;
inline constexpr int cmbModeNumber = 115;
inline constexpr int cmbNISOption = 116;
inline constexpr int txtEWTOption = 117;
inline constexpr int cmbLineType = 118;
inline constexpr int cmbImpedance = 119;
inline constexpr int cmbSoftStop = 120;
inline constexpr int txtLabel = 121;

inline constexpr int fraDefault = 200;  // holds the two below
inline constexpr int cmbRDVType = 201;
inline constexpr int cmdShowDefaults = 202;

inline constexpr int cmdOK = 300;
inline constexpr int cmdCancel = 301;
inline constexpr int cmdApply = 302;

}  // namespace rdv::control_id

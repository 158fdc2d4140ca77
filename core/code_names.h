// Names of coded fields, by code, as all faces show them; nullptr: the code has none.
#pragma once

namespace vexa {

inline constexpr const char* kLnbTypes[] = {"Normal", "LNBF", "Universal", "IF Input"};
inline constexpr const char* kOffOn[] = {"Off", "On"};
inline constexpr const char* kTones[] = {"Off", "On", "Auto"};
inline constexpr const char* kSwitchTypes[] = {"None", "Tone Burst", "DiSEqC 1.0"};
inline constexpr const char* kToneBursts[] = {"None", "A", "B"};
inline constexpr const char* kDiseqcPlaces[] = {"None", "A", "B", "C", "D"};
inline constexpr const char* kPlainSwitches[] = {"None"};
inline constexpr const char* kMotors[] = {"Fixed", "Motor"};
inline constexpr const char* kSides[] = {"West", "East"};
inline constexpr const char* kPolarizations[] = {"Horizontal", "Vertical", "Left", "Right"};
inline constexpr const char* kFecs[] = {"Auto", "1/2", "2/3", "3/4", "5/6", "7/8"};
inline constexpr const char* kServiceTypes[] = {nullptr, "TV", "Radio"};
inline constexpr const char* kTvStandards[] = {"PAL", "NTSC", "Auto"};
inline constexpr const char* kScreens[] = {"4:3", "16:9", "Letterbox"};

}  // namespace vexa

#pragma once
// Day and month names of the regional profiles, picked by the profile's language.
#include <string_view>

namespace qumbrel::vb::detail {

struct DateNames {
    std::string_view days[7];  // Sunday first
    std::string_view daysShort[7];
    std::string_view months[12];
    std::string_view monthsShort[12];
};

inline constexpr DateNames kEnglishNames{
    {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"},
    {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"},
    {"January", "February", "March", "April", "May", "June", "July", "August", "September",
     "October", "November", "December"},
    {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"}};

inline constexpr DateNames kGermanNames{
    {"Sonntag", "Montag", "Dienstag", "Mittwoch", "Donnerstag", "Freitag", "Samstag"},
    {"So", "Mo", "Di", "Mi", "Do", "Fr", "Sa"},
    {"Januar", "Februar", "M\xC3\xA4rz", "April", "Mai", "Juni", "Juli", "August", "September",
     "Oktober", "November", "Dezember"},
    {"Jan", "Feb", "Mrz", "Apr", "Mai", "Jun", "Jul", "Aug", "Sep", "Okt", "Nov", "Dez"}};

inline constexpr DateNames kFrenchNames{
    {"dimanche", "lundi", "mardi", "mercredi", "jeudi", "vendredi", "samedi"},
    {"dim.", "lun.", "mar.", "mer.", "jeu.", "ven.", "sam."},
    {"janvier", "f\xC3\xA9vrier", "mars", "avril", "mai", "juin", "juillet", "ao\xC3\xBBt",
     "septembre", "octobre", "novembre",
     "d\xC3\xA9"
     "cembre"},
    {"janv.", "f\xC3\xA9vr.", "mars", "avr.", "mai", "juin", "juil.", "ao\xC3\xBBt", "sept.",
     "oct.", "nov.",
     "d\xC3\xA9"
     "c."}};

inline const DateNames& names_for(std::string_view profileName) {
    const std::string_view lang = profileName.substr(0, 2);
    if (lang == "de") return kGermanNames;
    if (lang == "fr") return kFrenchNames;
    return kEnglishNames;
}

}  // namespace qumbrel::vb::detail

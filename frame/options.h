#pragma once
// The option model: one variable per key of the option file, named by its key.
// Bool options hold kTrue/kFalse; number options the leading number of their text.
#include <cstdint>
#include <string>
#include <vector>

#include "frame/flag.h"

namespace qumbrel {

struct Options {
    // [start]
    Flag alleventmsg = kFalse;  // [start] and [file] share it; [file] is read later and wins
    std::int32_t sheduler = 0;
    std::int32_t day = 0;
    std::string hour = "1";
    std::string minute = "0";
    std::int32_t autostart = 0;
    std::int32_t filetyp = 0;
    std::string filetypuserdef = "*.hnd";

    // [file]
    std::string sourcepath;
    std::string targetpath;               // composed by fkt_convertmain
    std::string targetpathRaw;            // as read from the file
    std::string targetpathsourcefile;     // composed by fkt_convertmain
    std::string targetpathsourcefileRaw;  // as read from the file
    std::int32_t binfilemodus = 0;
    std::int32_t noconversion = 0;
    std::int32_t targetformat = 0;
    std::string excelsourcefile;
    std::int32_t runexcelmakro = 0;
    std::int32_t targetname = 0;
    std::string targetnameformat = "$O";  // file holds ">$O"; the guard is cut on load
    std::string fileextension = "csv";
    std::string sourcenamesametarget = "0";
    std::string row = "1";
    std::string col = "1";
    std::string userdef1, userdef2, userdef3, userdef4;
    Flag measurementsinclusive = kTrue;
    Flag alarminclusive = kFalse;
    Flag messageinclusive = kFalse;
    Flag ctrleventinclusive = kFalse;
    Flag pveventinclusive = kFalse;
    Flag operatinloginclusive = kFalse;
    Flag signatureinclusive = kFalse;
    Flag scaleinfoinclusive = kFalse;
    std::string almlsuffix;
    std::string excelsourcefilealarmseparate = "0";
    std::string excelsourcefilealarm;
    std::string language;  // default: program folder + "/deutsch.lng"
    Flag printfile = kFalse;
    Flag printfile2 = kFalse;
    std::string printer;
    std::string printer2;
    std::int32_t printerorientationland = 0;
    Flag delreportfile = kFalse;
    std::string printpage;
    std::int32_t savetoggle = 0;

    // [userdefined]
    std::string Channels;
    std::vector<std::string> vChannelList;
    std::string TimeSelect = "0";
    std::string TimeStart;
    std::string TimeStop;
    std::string listseparator;
    std::string decseparator;
    std::string thousseparator;
    std::string dateseparator;
    std::string timeseparator;

    // Registry value "protection"
    std::string strProtectionPassword;
    Flag bLoggedIn = kTrue;
};

}  // namespace qumbrel

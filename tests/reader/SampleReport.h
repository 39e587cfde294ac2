// A report as the program writes it (line feeds; the saved file has CR LF),
// with every kind of line the installation section can hold.
#pragma once

#include <string>

inline const std::string kSampleReportBody =
    "Orvane Software system report on 11/22/26 14:36:06\n"
    "\n"
    "\nProgram:\n"
    "OrvaneDiagnostics 9.3.1.1042\n"
    "in C:\\Tools\n"
    "launched as administrator\n"
    "\nHost:\n"
    "\tname: PC1 (WORKGROUP\\PC1)\n"
    "\tuser: anne\n"
    "\nWindows:\n"
    "\tversion reported: 8 (Desktop)\n"
    "\treal version: 10.0.19045\n"
    "\tid: 12345-oem-0000001-54321\n"
    "\tsystem path: C:\\windows\n"
    "\tprogram file path: C:\\Program Files\n"
    "\tapplication common shared path: C:\\ProgramData\n"
    "\nHardware:\n"
    "\tsystem: 64 bits\n"
    "\tbios: Default System BIOS\n"
    "\tboard: Intel Corporation\n"
    "\tnumber of processors: 2\n"
    "\tprocessor : 9 (26.513)\n"
    "\tactive processor mask: 3\n"
    "\tpage size: 4096\n"
    "\tapplication addresses: 0x10000-0xfffeffff\n"
    "\tmemory: 24683616K physical, 137438953344K virtual, 24683624K paging\n"
    "\tC volume: 0x43000000 0xa NTFS total 264212084K free 81646476K (user 81646476K)\n"
    "\nNetwork:\n"
    "Adapters enumeration:\n"
    "\tAdapter name: {00000002-0000-0000-0000-4E6574446576}\n"
    "\tIfIndex (IPv4 interface): 2\n"
    "\tNumber of Unicast Addresses: 3\n"
    "\tNo Anycast Addresses\n"
    "\tNo Multicast Addresses\n"
    "\tNumber of DNS Server Addresses: 1\n"
    "\tDNS Suffix: \n"
    "\tDescription: eth0\n"
    "\tFriendly name: eth0\n"
    "\tPhysical address: 02-FC-00-00-00-01\n"
    "\tFlags: 384\n"
    "\tMtu: 1400\n"
    "\tIfType: 6\n"
    "\tOperStatus: 1\n"
    "\tIpv6IfIndex (IPv6 interface): 0\n"
    "\tZoneIndices (hex): 0 1 a 0 0 0 0 0 0 0 0 0 0 0 0 ffffffff \n"
    "\tNumber of IP Adapter Prefix entries: 1\n"
    "\n"
    "\nOrvane Software installation:\n"
    "* Current directory (C:\\Tools):\n"
    "\t00000010          0\t22/11/2026  14:33:45\t22/11/2026  14:33:45\t.\t\n"
    "\t00000020       4753\t07/03/2021  14:05:09\t08/03/2021  09:00:00\ttool.dll\t9.3.1.0\n"
    "* Standard installation directory (C:\\Program Files\\Orvane Software V9):\n"
    "* Registry installation data:\n"
    "\tInstallLocation: D:\\Suite\n"
    "\tVersionMajor: 9\n"
    "\tVersionMinor: -3\n"
    "\tVersionBuild: 1042\n"
    "* Registry installation directory:\n"
    "\t80000020 -1294967296\t01/01/2020  00:00:00\t01/01/2020  00:00:01\tbig.bin\t ACL: Allow BUILTIN\\Administrators [RWX];\n"
    "\t\t\t\tContent:\"abc??\"\n"
    "* Shared parameters directory (C:\\ProgramData\\Orvane Software):\n"
    "* Shared Batch directory (C:\\ProgramData\\Orvane Software\\Runner):\n";

// The text with every line feed made CR LF, as the program saves a report.
inline std::string WithCrLf(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\n') out += '\r';
        out += c;
    }
    return out;
}

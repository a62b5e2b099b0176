#pragma once

namespace Zelv::Testing {

/// The smallest "Devices.xml" that a set starts with. Its identity is given, so that the start
/// gives none; the model is given, so that the start does not look for a second element.
inline constexpr char const* cSmallDevices =
    "<Devices><MulticastGroup>239.255.44.46</MulticastGroup><MulticastPort>4451</MulticastPort>"
    "<HeartBeatInterval>10</HeartBeatInterval><Model/>"
    "<LocalTV ID=\"6ba7b810-9dad-11d1-80b4-00c04fd430c8\"><Name>Small set</Name>"
    "<Model/><Location/><Interfaces><NetworkInterface ID=\"1\"><MACAddress/>"
    "<IPv4><Address/></IPv4></NetworkInterface></Interfaces></LocalTV></Devices>";

}  // namespace Zelv::Testing

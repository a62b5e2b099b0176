#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ZelvCtl {

/// What was asked for on the command line.
struct Options {
  enum Verb { Devices, Get, Watch, Set, Command, Input, Asset, Serve };

  Verb verb = Devices;
  bool watch = false;
  bool json = false;
  double timeout = 3;  ///< seconds to wait for answers at most
  std::string address;
  std::string group = "239.255.44.46";
  std::string port = "4451";
  std::string name = "zelvctl";
  std::string id;
  int interval = 10;  ///< seconds between heartbeats

  std::string device;  ///< name, identifier or address of the one to speak to
  std::string path;
  std::vector<std::string> values;  ///< one to set, or those to send as input
  std::string inputType;            ///< may be empty
  std::string command;              ///< an XML element
  bool noWait = false;              ///< whether nothing is expected to be returned
  int returns = 1;                  ///< how many are waited for
  std::vector<std::string> assets;  ///< names of those to fetch
  std::vector<std::string> assetIds;
  std::vector<std::string> packages;  ///< names of those to fetch, or to look for the assets in
  std::vector<std::string> packageIds;
  std::string folder = ".";           ///< where files are written to
  bool list = false;                  ///< whether assets are shown, not fetched
  std::optional<std::string> answer;  ///< to every command; nothing: the command itself

  /// Reads the arguments. @return true when there is work to do; otherwise aStatus is what to exit
  /// with, and help or one line on what is wrong has been printed.
  bool parse(int aCount, char const* const* aArguments, int& aStatus);
};

}  // namespace ZelvCtl

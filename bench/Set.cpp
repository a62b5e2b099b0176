#include "bench/Set.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "zelv/interfaces/InterfaceFactory.h"
#include "zelv/platform/Directories.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Bench {

Set::Set() {
  start(ZELV_BENCH_FACTORY_FILES);
}

Set::Set(int aHeartBeatInterval) : mFactoryFiles(std::make_unique<TemporaryDirectory>()) {
  std::filesystem::copy(ZELV_BENCH_FACTORY_FILES, mFactoryFiles->path());
  std::ifstream file(mFactoryFiles->path() + "Devices.xml");
  std::string text{std::istreambuf_iterator<char>(file), {}};
  std::string const tag = "<HeartBeatInterval>";
  std::size_t const from = text.find(tag) + tag.size();
  text.replace(from, text.find('<', from) - from, std::to_string(aHeartBeatInterval));
  mFactoryFiles->put("Devices.xml", text);
  start(mFactoryFiles->path());
}

void Set::start(std::string const& aFactoryFiles) {
  PCRealDebug::Silence();
  Platform::Directories::Set(aFactoryFiles, mDirectory.path());
  if (!InterfaceFactory::initialize()) {
    throw std::runtime_error("the library does not start");
  }
  mData = dynamic_cast<IAppData*>(InterfaceFactory::getInterface(IID_IAppData));
}

Set::~Set() {
  InterfaceFactory::terminate();
}

}  // namespace Zelv::Bench

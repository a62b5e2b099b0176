#include "bench/Set.h"

#include <cstdlib>
#include <stdexcept>

#include "zelv/interfaces/InterfaceFactory.h"
#include "zelv/platform/Directories.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Bench {

Set::Set() {
  std::string name = (std::filesystem::temp_directory_path() / "zelv-bench-XXXXXX").string();
  if (!mkdtemp(name.data())) {
    throw std::runtime_error("no temporary directory");
  }
  mDirectory = name + "/";
  PCRealDebug::Silence();
  Platform::Directories::Set(ZELV_BENCH_FACTORY_FILES, mDirectory);
  if (!InterfaceFactory::initialize()) {
    throw std::runtime_error("the library does not start");
  }
  mData = dynamic_cast<IAppData*>(InterfaceFactory::getInterface(IID_IAppData));
}

Set::~Set() {
  InterfaceFactory::terminate();
  std::filesystem::remove_all(mDirectory);
}

}  // namespace Zelv::Bench

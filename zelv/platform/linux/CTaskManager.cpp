#include "zelv/platform/CTaskManager.h"

/// On a host an application is nothing but an identity.
class CApplication {};

namespace {
CApplication theZelvApplication;
}  // namespace

CTaskManager g_TaskManager;

CApplication* CTaskManager::GetApplication(DTV_APPLICATION aApplication) {
  return aApplication == DTV_APPLICATION_ZELV ? &theZelvApplication : nullptr;
}

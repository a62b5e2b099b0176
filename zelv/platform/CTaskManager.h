#pragma once

#include "zelv/platform/Export.h"

/// An application of the set, known to the platform alone.
class CApplication;

/// The set's applications, by number.
enum DTV_APPLICATION : int {
  /// The application that this library belongs to.
  DTV_APPLICATION_ZELV = 67,
};

/// Knows the applications of the set.
class ZELV_EXPORT CTaskManager {
 public:
  /// The application object, owned by the platform and alive until the process ends; null for an
  /// application that the platform does not know.
  CApplication* GetApplication(DTV_APPLICATION aApplication);
};

/// The one task manager of the process.
extern ZELV_EXPORT CTaskManager g_TaskManager;

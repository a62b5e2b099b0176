#pragma once

namespace ZelvApps {

/// Turns SIGINT, SIGTERM and SIGHUP into a descriptor that becomes readable.
///
/// MUST be made before any other thread, since threads inherit which signals are held back.
class StopSignal {
 public:
  StopSignal();
  StopSignal(StopSignal const&) = delete;
  StopSignal& operator=(StopSignal const&) = delete;
  ~StopSignal();

  /// Readable for poll() once one of the signals has come; it stays so.
  int Descriptor() const { return mDescriptor; }

 private:
  int mDescriptor;
};

}  // namespace ZelvApps

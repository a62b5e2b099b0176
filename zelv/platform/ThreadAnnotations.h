#pragma once

// Names for clang's thread-safety analysis (https://clang.llvm.org/docs/ThreadSafetyAnalysis.html);
// other compilers see nothing.

#if defined(__clang__)
#define ZELV_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define ZELV_THREAD_ANNOTATION(x)
#endif

/// The member may be touched only while the lock is held.
#define ZELV_GUARDED_BY(lock) ZELV_THREAD_ANNOTATION(guarded_by(lock))

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

/// The caller must hold the lock.
#define ZELV_REQUIRES(lock) ZELV_THREAD_ANNOTATION(requires_capability(lock))

/// The operation takes or releases the lock; without a name, the object's own.
#define ZELV_ACQUIRE(...) ZELV_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ZELV_RELEASE(...) ZELV_THREAD_ANNOTATION(release_capability(__VA_ARGS__))

/// For what the analysis cannot follow; say why beside it.
#define ZELV_NO_THREAD_SAFETY_ANALYSIS ZELV_THREAD_ANNOTATION(no_thread_safety_analysis)

#pragma once

// Clang's thread-safety annotations (https://clang.llvm.org/docs/ThreadSafetyAnalysis.html), empty for other
// compilers. The clang build turns their warnings into errors.

#if defined(__clang__)
#define MARBEX_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define MARBEX_THREAD_ANNOTATION(x)
#endif

#define MARBEX_CAPABILITY(name) MARBEX_THREAD_ANNOTATION(capability(name))
#define MARBEX_SCOPED_CAPABILITY MARBEX_THREAD_ANNOTATION(scoped_lockable)
#define MARBEX_GUARDED_BY(lock) MARBEX_THREAD_ANNOTATION(guarded_by(lock))
#define MARBEX_PT_GUARDED_BY(lock) MARBEX_THREAD_ANNOTATION(pt_guarded_by(lock))
#define MARBEX_ACQUIRE(...) MARBEX_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define MARBEX_TRY_ACQUIRE(...) MARBEX_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define MARBEX_RELEASE(...) MARBEX_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define MARBEX_REQUIRES(...) MARBEX_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define MARBEX_EXCLUDES(...) MARBEX_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define MARBEX_ASSERT_CAPABILITY(lock) MARBEX_THREAD_ANNOTATION(assert_capability(lock))
#define MARBEX_RETURN_CAPABILITY(lock) MARBEX_THREAD_ANNOTATION(lock_returned(lock))
#define MARBEX_NO_THREAD_SAFETY_ANALYSIS MARBEX_THREAD_ANNOTATION(no_thread_safety_analysis)

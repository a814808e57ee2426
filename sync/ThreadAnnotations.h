// Names for the attributes of clang's thread-safety analysis. Other compilers ignore them.
//
// The analysis reports a member that is used without its mutex, and a function that is called
// without the mutex that the function requires. scripts/tidy.py runs the analysis.

#ifndef SYNC_THREADANNOTATIONS_H
#define SYNC_THREADANNOTATIONS_H

#if defined(__clang__)
#define SYNC_ATTRIBUTE(x) __attribute__((x))
#else
#define SYNC_ATTRIBUTE(x)
#endif

// A member that is read and written only with the mutex locked.
#define GUARDED_BY(mutex) SYNC_ATTRIBUTE(guarded_by(mutex))

// A pointer whose target is read and written only with the mutex locked.
#define PT_GUARDED_BY(mutex) SYNC_ATTRIBUTE(pt_guarded_by(mutex))

// A function, or a lambda, whose caller has locked the mutexes.
#define REQUIRES(...) SYNC_ATTRIBUTE(requires_capability(__VA_ARGS__))

// A function whose caller has not locked the mutexes.
#define EXCLUDES(...) SYNC_ATTRIBUTE(locks_excluded(__VA_ARGS__))

// For the types of mutexes and locks.
#define CAPABILITY(kind) SYNC_ATTRIBUTE(capability(kind))
#define SCOPED_CAPABILITY SYNC_ATTRIBUTE(scoped_lockable)
#define ACQUIRES(...) SYNC_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define RELEASES(...) SYNC_ATTRIBUTE(release_capability(__VA_ARGS__))
#define ACQUIRES_SHARED(...) SYNC_ATTRIBUTE(acquire_shared_capability(__VA_ARGS__))
#define RELEASES_SHARED(...) SYNC_ATTRIBUTE(release_shared_capability(__VA_ARGS__))
#define ASSERTS_HELD(...) SYNC_ATTRIBUTE(assert_capability(__VA_ARGS__))

// A function that the analysis cannot follow. A comment at the function says why.
#define NO_THREAD_SAFETY_ANALYSIS SYNC_ATTRIBUTE(no_thread_safety_analysis)

#endif

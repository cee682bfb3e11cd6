#pragma once

/// What a lock guards, in a form that clang checks (`-Wthread-safety`); other compilers ignore it.
#if defined(__clang__)
#define IOS_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define IOS_THREAD_ANNOTATION(x)
#endif

#define IOS_CAPABILITY(name) IOS_THREAD_ANNOTATION(capability(name))
#define IOS_SCOPED_CAPABILITY IOS_THREAD_ANNOTATION(scoped_lockable)
/// On a field: read and written only while the mutex is held.
#define IOS_GUARDED_BY(mutex) IOS_THREAD_ANNOTATION(guarded_by(mutex))
/// On a function: the caller holds the mutex.
#define IOS_REQUIRES(mutex) IOS_THREAD_ANNOTATION(requires_capability(mutex))
/// On a function: the caller does not hold the mutex.
#define IOS_EXCLUDES(mutex) IOS_THREAD_ANNOTATION(locks_excluded(mutex))
#define IOS_ACQUIRE(...) IOS_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define IOS_RELEASE(...) IOS_THREAD_ANNOTATION(release_capability(__VA_ARGS__))

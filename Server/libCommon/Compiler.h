// The one header that may use what only some compilers know. Everything else is plain C++20.
#pragma once

// Clang checks at compile time that guarded members are touched under their lock; other compilers see nothing.
#if defined(__clang__)
#define WRB_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define WRB_THREAD_ANNOTATION(x)
#endif

#define WRB_CAPABILITY(name) WRB_THREAD_ANNOTATION(capability(name))
#define WRB_SCOPED_CAPABILITY WRB_THREAD_ANNOTATION(scoped_lockable)
#define WRB_GUARDED_BY(lock) WRB_THREAD_ANNOTATION(guarded_by(lock))
#define WRB_ACQUIRE(...) WRB_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define WRB_ACQUIRE_SHARED(...) WRB_THREAD_ANNOTATION(acquire_shared_capability(__VA_ARGS__))
#define WRB_RELEASE(...) WRB_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define WRB_RELEASE_SHARED(...) WRB_THREAD_ANNOTATION(release_shared_capability(__VA_ARGS__))
#define WRB_RELEASE_GENERIC(...) WRB_THREAD_ANNOTATION(release_generic_capability(__VA_ARGS__))
#define WRB_REQUIRES(...) WRB_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define WRB_REQUIRES_SHARED(...) WRB_THREAD_ANNOTATION(requires_shared_capability(__VA_ARGS__))
#define WRB_EXCLUDES(...) WRB_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))

// A thread-local variable. The C++ library of MinGW has emulated ones, which clang cannot describe in CodeView: the
// object file would refer to a symbol that is nowhere.
#if defined(__clang__) && defined(__MINGW32__)
#define WRB_THREAD_LOCAL __attribute__((nodebug)) thread_local
#else
#define WRB_THREAD_LOCAL thread_local
#endif

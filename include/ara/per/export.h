#ifndef ARA_PER_EXPORT_H_
#define ARA_PER_EXPORT_H_

/// Visibility of the library's symbols. The library is built with everything hidden;
/// `ARA_PER_EXPORT` shows a class or a function to applications, `ARA_PER_LOCAL` hides a
/// member of a shown class that would otherwise be shown with it.
#define ARA_PER_EXPORT __attribute__((visibility("default")))
#define ARA_PER_LOCAL __attribute__((visibility("hidden")))

#endif  // ARA_PER_EXPORT_H_

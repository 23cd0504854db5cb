#pragma once
// The module is built with hidden symbols so that its engine glue stays
// private; only the install functions and the classes that hosts and tests
// use directly are marked with MVN_OGRE_API and exported.
#if defined(__GNUC__) || defined(__clang__)
#define MVN_OGRE_API __attribute__((visibility("default")))
#else
#define MVN_OGRE_API
#endif

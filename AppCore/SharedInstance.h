// The one instance of a class that the whole run shares. The composition root makes the object, announces it here for as long
// as it lives, and is the only caller of the classes' `shared()`; everything else is handed references.
// Threads: main thread.
#pragma once

#include "platform/base/Require.h"

namespace quillet {

template <typename T> class SharedInstance {
public:
    /// `instance` outlives this object; there is no other shared instance of its class (REQUIRE).
    explicit SharedInstance(T& instance)
    {
        REQUIRE(s_instance == nullptr);
        s_instance = &instance;
    }
    ~SharedInstance() { s_instance = nullptr; }
    SharedInstance(const SharedInstance&) = delete;
    SharedInstance& operator=(const SharedInstance&) = delete;

    /// The shared instance; there is one (REQUIRE).
    static T& get()
    {
        REQUIRE(s_instance != nullptr);
        return *s_instance;
    }

private:
    static inline T* s_instance = nullptr;
};

}  // namespace quillet

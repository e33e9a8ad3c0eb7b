#pragma once

namespace Kelvor {

class CKVObject;

// A class record: name, base record and an optional factory. Records are
// function-local statics so that they exist before any other static needs
// them; a record also enters a by-name table so that hosts can create
// objects from a class name.
class CKVRuntimeClass
{
public:
    using CreateFunction = CKVObject* (*)();

    CKVRuntimeClass(char const* name, CKVRuntimeClass const* base, CreateFunction create);
    ~CKVRuntimeClass();

    CKVRuntimeClass(CKVRuntimeClass const&) = delete;
    CKVRuntimeClass& operator=(CKVRuntimeClass const&) = delete;

    char const* name() const { return mName; }
    CKVRuntimeClass const* base() const { return mBase; }
    bool canCreate() const { return mCreate != nullptr; }

    // Null when the class has no creation function.
    CKVObject* createObject() const;

    // True when this record is `other` or derives from it.
    bool isDerivedFrom(CKVRuntimeClass const* other) const;

    // The record registered under `name`, or null.
    static CKVRuntimeClass const* find(char const* name);

private:
    char const* mName;
    CKVRuntimeClass const* mBase;
    CreateFunction mCreate;
};

} // namespace Kelvor

// Declares `desc()` and the `isA()` override inside a class body.
#define KV_DECLARE_RUNTIME_CLASS(ClassName)                       \
public:                                                           \
    static ::Kelvor::CKVRuntimeClass const* desc();               \
    ::Kelvor::CKVRuntimeClass const* isA() const override;

// Defines the record of ClassName. `CreateFn` is a `CKVObject* (*)()` or nullptr.
// The trailing static forces the record into the by-name table at load time.
#define KV_IMPLEMENT_RUNTIME_CLASS_FN(ClassName, BaseName, CreateFn)                        \
    ::Kelvor::CKVRuntimeClass const* ClassName::desc()                                      \
    {                                                                                       \
        static ::Kelvor::CKVRuntimeClass record(#ClassName, BaseName::desc(), CreateFn);    \
        return &record;                                                                     \
    }                                                                                       \
    ::Kelvor::CKVRuntimeClass const* ClassName::isA() const { return ClassName::desc(); }   \
    namespace { ::Kelvor::CKVRuntimeClass const* const kvRecordOf##ClassName = ClassName::desc(); }

// A record whose factory builds the class with its default constructor.
#define KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(ClassName, BaseName)                                  \
    namespace { ::Kelvor::CKVObject* kvCreate##ClassName() { return new ClassName(); } }         \
    KV_IMPLEMENT_RUNTIME_CLASS_FN(ClassName, BaseName, &kvCreate##ClassName)

// A record for a class that cannot be created by name (abstract or no default constructor).
#define KV_IMPLEMENT_RUNTIME_CLASS(ClassName, BaseName) \
    KV_IMPLEMENT_RUNTIME_CLASS_FN(ClassName, BaseName, nullptr)

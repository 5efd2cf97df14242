#pragma once
// Run-time class descriptors: every host object names its class, and
// isKindOf follows the class tree.
class AcRxClass {
 public:
  AcRxClass(const char* name, const AcRxClass* parent) : m_name(name), m_parent(parent) {}
  AcRxClass(const AcRxClass&) = delete;
  AcRxClass& operator=(const AcRxClass&) = delete;
  const char* name() const { return m_name; }
  const AcRxClass* myParent() const { return m_parent; }
  bool isDerivedFrom(const AcRxClass* other) const;

 private:
  const char* m_name;
  const AcRxClass* m_parent;
};

class AcRxObject {
 public:
  virtual ~AcRxObject() = default;
  static const AcRxClass* desc();
  virtual const AcRxClass* isA() const { return desc(); }
  bool isKindOf(const AcRxClass* cls) const { return isA()->isDerivedFrom(cls); }
};

// Declares desc(), isA() and cast() in a class body.
#define ACRX_DECLARE_MEMBERS(CLASS)                                                      \
  static const AcRxClass* desc();                                                        \
  const AcRxClass* isA() const override { return desc(); }                               \
  static CLASS* cast(AcRxObject* o) { return o && o->isKindOf(desc()) ? static_cast<CLASS*>(o) : nullptr; } \
  static const CLASS* cast(const AcRxObject* o) {                                        \
    return o && o->isKindOf(desc()) ? static_cast<const CLASS*>(o) : nullptr;            \
  }

// Defines desc() in a source file.
#define ACRX_DEFINE_MEMBERS(CLASS, PARENT)          \
  const AcRxClass* CLASS::desc() {                  \
    static const AcRxClass cls(#CLASS, PARENT::desc()); \
    return &cls;                                    \
  }

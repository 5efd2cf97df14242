#include "host/db/rx_class.h"

bool AcRxClass::isDerivedFrom(const AcRxClass* other) const {
  for (const AcRxClass* c = this; c; c = c->m_parent)
    if (c == other) return true;
  return false;
}

const AcRxClass* AcRxObject::desc() {
  static const AcRxClass cls("AcRxObject", nullptr);
  return &cls;
}

#pragma once
// Makes a named layer current for the life of a scope and restores the
// layer that was current before. A missing layer is created. A switch that
// fails prints "\n图层切换失败\n" and leaves the current layer as it is.
#include "host/base/strings.h"
#include "host/db/object_id.h"

class CLayerSwitch {
 public:
  explicit CLayerSwitch(const CString& layer);
  ~CLayerSwitch();
  CLayerSwitch(const CLayerSwitch&) = delete;
  CLayerSwitch& operator=(const CLayerSwitch&) = delete;
  bool Switched() const { return m_bSwitched; }

 private:
  AcDbObjectId m_idPrevious;
  bool m_bSwitched = false;
};

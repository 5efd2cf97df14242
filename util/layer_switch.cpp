#include "util/layer_switch.h"

#include "host/db/operations.h"
#include "host/ed/document.h"
#include "host/ed/messages.h"

CLayerSwitch::CLayerSwitch(const CString& layer) {
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  AcAxDocLock lock(AcAp::kWrite);
  AcDbObjectId layerId;
  if (db && lock.lockStatus() == Acad::eOk) {
    m_idPrevious = db->clayer();
    if (host::findLayer(db, layer, layerId, true) == Acad::eOk && db->setClayer(layerId) == Acad::eOk)
      m_bSwitched = true;
  }
  if (!m_bSwitched) acutPrintf("\n图层切换失败\n");
}

CLayerSwitch::~CLayerSwitch() {
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  if (m_bSwitched && db && !m_idPrevious.isNull()) db->setClayer(m_idPrevious);
}

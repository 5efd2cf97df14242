#include "host/base/error_status.h"

namespace Acad {
const char* errorString(ErrorStatus es) {
  switch (es) {
    case eOk: return "eOk";
    case eNotImplementedYet: return "eNotImplementedYet";
    case eInvalidInput: return "eInvalidInput";
    case eNullObjectId: return "eNullObjectId";
    case eNullObjectPointer: return "eNullObjectPointer";
    case eWasErased: return "eWasErased";
    case eNotThatKindOfClass: return "eNotThatKindOfClass";
    case eWrongDatabase: return "eWrongDatabase";
    case eWasOpenForWrite: return "eWasOpenForWrite";
    case eWasOpenForRead: return "eWasOpenForRead";
    case eWasNotOpenForWrite: return "eWasNotOpenForWrite";
    case eKeyNotFound: return "eKeyNotFound";
    case eDuplicateKey: return "eDuplicateKey";
    case eAlreadyInDb: return "eAlreadyInDb";
    case eNoDatabase: return "eNoDatabase";
    case eNotApplicable: return "eNotApplicable";
    case eCannotScaleNonUniformly: return "eCannotScaleNonUniformly";
    case eDegenerateGeometry: return "eDegenerateGeometry";
    case eInvalidExtents: return "eInvalidExtents";
    case eAtMaxReaders: return "eAtMaxReaders";
    case eInvalidIndex: return "eInvalidIndex";
    case eFileAccessErr: return "eFileAccessErr";
    case eBadDxfFile: return "eBadDxfFile";
    case eGeneralModelingFailure: return "eGeneralModelingFailure";
    case eLockViolation: return "eLockViolation";
    case eNotInGroup: return "eNotInGroup";
    case eSelfReference: return "eSelfReference";
    case eOutOfMemory: return "eOutOfMemory";
  }
  return "unknown status";
}
}  // namespace Acad

#pragma once
// Status codes returned by host operations; nothing in the host throws across
// its interface.
namespace Acad {
enum ErrorStatus {
  eOk = 0,
  eNotImplementedYet,
  eInvalidInput,
  eNullObjectId,
  eNullObjectPointer,
  eWasErased,
  eNotThatKindOfClass,
  eWrongDatabase,
  eWasOpenForWrite,
  eWasOpenForRead,
  eWasNotOpenForWrite,
  eKeyNotFound,
  eDuplicateKey,
  eAlreadyInDb,
  eNoDatabase,
  eNotApplicable,
  eCannotScaleNonUniformly,
  eDegenerateGeometry,
  eInvalidExtents,
  eAtMaxReaders,
  eInvalidIndex,
  eFileAccessErr,
  eBadDxfFile,
  eGeneralModelingFailure,
  eLockViolation,
  eNotInGroup,
  eSelfReference,  // a block that inserts itself
  eOutOfMemory,    // work refused because it would exceed a limit
};
const char* errorString(ErrorStatus es);
}  // namespace Acad

namespace AcDb {
enum OpenMode { kForRead = 0, kForWrite = 1, kForNotify = 2 };
enum Visibility { kVisible = 0, kInvisible = 1 };
}  // namespace AcDb

#pragma once
// Body of a plain property setter: the object must be open for write.
#define HOST_SET(FIELD, VALUE)                                              \
  do {                                                                      \
    if (const auto es_ = assertWriteEnabled(); es_ != Acad::eOk) return es_; \
    FIELD = VALUE;                                                          \
    return Acad::eOk;                                                       \
  } while (0)

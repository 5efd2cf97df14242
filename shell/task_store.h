#pragma once
// A drawing's batch tasks in the drawing itself: the xrecord "BLX" in the
// dictionary "VKDJBLX" of the named-objects dictionary.
//
// The record's data, in order (see util/vk_resbuf.h for the group codes):
//   version (32-bit integer, 2 when written), task count (32-bit integer),
//   then per task:
//     name (string)
//     execution state (32-bit integer) -- the first of the task's integers
//     export state (32-bit integer)    -- the second
//     tool count (32-bit integer), then per tool:
//       name (string)
//       centre point (point)
//       entity count (32-bit integer), then that many entity references
//         (soft pointers, code 331)
//       outline (soft pointer, handle "0" while there is none)
//       execution state (32-bit integer)
//       export state (32-bit integer)
//     and from version 2 on, the task's parameters:
//       remove dashed (boolean), point, line and fine tolerance (reals,
//       each read back as both the point and the vector tolerance), step,
//       break length (reals), axis direction (32-bit integer).
// Version 1 records end after the tools; their tasks keep the default
// parameters. Entities are referenced by handle, so a reference names the
// same entity after the drawing is saved and opened again.
#include <string>
#include <vector>

#include "host/db/database.h"
#include "shell/batch_task.h"
#include "util/vk_resbuf.h"

inline constexpr const char* kTaskDictionaryName = "VKDJBLX";
inline constexpr const char* kTaskRecordName = "BLX";
inline constexpr std::int32_t kTaskStoreVersion = 2;

// Appends the whole store (version, count, tasks) to out, in the current
// version, as a drawing db would hold it: references to erased entities and
// to objects of other drawings are left out (an outline becomes "0").
void WriteTaskList(const CBatchTaskList& tasks, const AcDbDatabase* db, VKResBuf& out);

// Reads a whole store from in. References are resolved in db: one that no
// longer names an unerased entity is dropped from its tool (an outline
// becomes null), each with a warning. Raises VKResBuf::Error when the data
// are malformed (a missing item, an item of the wrong kind, a negative
// count or a version below 1).
CBatchTaskList ReadTaskList(VKResBuf& in, AcDbDatabase* db, std::vector<std::string>& warnings);

// Reads the drawing's store into tasks (emptied first). False, with tasks
// empty, when the drawing holds no store; a damaged store gives true, an
// empty list and a warning, never part of its tasks.
bool LoadTaskList(AcDbDatabase* db, CBatchTaskList& tasks, std::vector<std::string>& warnings);

// Writes tasks into the drawing, creating the dictionary and the record
// when missing. A record that already holds exactly this data is left
// untouched, so an unchanged store does not change the drawing. False, with
// a warning, when the names are taken by objects of another kind (they are
// left as they are).
bool SaveTaskList(AcDbDatabase* db, const CBatchTaskList& tasks, std::vector<std::string>& warnings);

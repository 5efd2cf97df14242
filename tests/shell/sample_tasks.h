#pragma once
// A task list for the task store tests, over lines it adds to the drawing,
// and task lists as JSON for the tests' oracles.
#include <string>

#include "host/db/database.h"
#include "shell/batch_task.h"

// Three tasks: the first with two tools (three entities and an outline,
// then one entity and no outline), Chinese names, every state; the second
// with a name padded by spaces and edited parameters; the third plain.
CBatchTaskList SampleTasks(AcDbDatabase& db);

// "tasks":[...] (a member for a JSON object): names, states, centres,
// entities and outline by handle ("0" for none), parameters.
std::string TasksJson(const CBatchTaskList& tasks);

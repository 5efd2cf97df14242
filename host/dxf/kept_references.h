#pragma once
// Objects the host keeps without modelling can name other objects in their
// data. When those go, the references must go too, or the drawing written
// afterwards names objects it no longer holds.
#include <set>
#include <string>

#include "host/db/database.h"

namespace host::dxf {

// Takes the handles in gone (upper-case hex) out of the data of every kept
// object of db that is not erased: an association network drops them from
// its list of actions (and its count), any other kept object gets a null
// handle in their place. Returns how many objects changed.
int dropKeptReferences(AcDbDatabase& db, const std::set<std::string>& gone);

}  // namespace host::dxf

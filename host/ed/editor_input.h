#pragma once
// Editor operations a command uses to talk to the user: selection sets,
// point and text input, display updates, the current view and highlighting.
// Input comes from the command line's input source (see command_line.h).
#include <cstdint>
#include <string>

#include "host/base/ac_array.h"
#include "host/base/error_status.h"
#include "host/db/object_id.h"
#include "host/db/resbuf.h"
#include "host/ge/vectors.h"

class AcApDocument;
class AcDbDatabase;

using ads_name = std::int64_t[2];
using ads_point = double[3];

// Results of user input (and RTNONE, from resbuf.h: Enter with nothing given).
constexpr int RTNORM = 5100;   // an answer
constexpr int RTERROR = -5001;
constexpr int RTCAN = -5002;   // cancelled (or the input ended)
constexpr int RTREJ = -5003;   // refused arguments
constexpr int RTKWORD = -5005;
// The entity kind in a selection filter (group 0, which would end a list).
constexpr int RTDXF0 = 5020;

// Selection sets. Modes:
//   null      ask the user (the prompt "Select objects: "); answers, one per
//             line until Enter: picks from a view, "W x1,y1 x2,y2" (wholly
//             inside), "C x1,y1 x2,y2" (touching), "A" or "ALL", "P"
//             (previous set), "H h1 h2 ..." or bare handles "1F 2A";
//   ":$"      ask with the prompt given as pt1 (a const char* const[2],
//             the first used);
//   "W", "C"  window or crossing with corners pt1 and pt2 (ads_point);
//   "A", "X"  every entity of model space;
//   "P"       the previous selection set.
// Window and crossing judge an entity by its true geometry (arcs, bulges,
// curves), not by its extents. Only "A" and "X" select invisible entities
// and entities on layers that are off or frozen. The filter holds entity
// kinds (code RTDXF0 or 0, "LINE,ARC", wildcards * and ?) and layer names (code 8).
// RTNORM with a set, RTNONE when nothing was selected, RTCAN when cancelled.
int acedSSGet(const char* str, const void* pt1, const void* pt2, const resbuf* filter, ads_name ss);
int acedSSLength(const ads_name ss, std::int32_t* len);
int acedSSName(const ads_name ss, std::int32_t i, ads_name entres);
int acedSSFree(const ads_name ss);
Acad::ErrorStatus acdbGetObjectId(AcDbObjectId& objId, const ads_name objName);
Acad::ErrorStatus acdbGetAdsName(ads_name objName, AcDbObjectId objId);

// A point: typed "x,y" or "x,y,z", or picked in a view. RTNORM, RTNONE on
// Enter, RTCAN on Esc or when the input ended.
int acedGetPoint(const ads_point basePoint, const char* prompt, ads_point result);
// A line of text. RTNORM (an empty line is an empty string), RTCAN.
int acedGetString(int cronly, const char* prompt, char* result, std::size_t bufLen);

// Tells the views that the drawing changed and should be drawn again.
int acedUpdateDisplay();

// A view: what the current viewport shows.
class AcDbViewTableRecord {
 public:
  AcGePoint2d centerPoint() const { return m_center; }
  void setCenterPoint(const AcGePoint2d& p) { m_center = p; }
  double height() const { return m_height; }
  void setHeight(double h) { m_height = h; }
  double width() const { return m_width; }
  void setWidth(double w) { m_width = w; }

 private:
  AcGePoint2d m_center{0, 0};
  double m_height = 297, m_width = 420;
};
class AcDbViewport;
// Makes the view current in the current document's viewport.
Acad::ErrorStatus acedSetCurrentView(AcDbViewTableRecord* view, AcDbViewport* viewport);

namespace host::ed {

// The same selections as acedSSGet, as id arrays, for the host's own code.
int getSelection(const std::string& prompt, AcDbObjectIdArray& ids, const resbuf* filter = nullptr);
AcDbObjectIdArray selectAll(const AcDbDatabase* db, const resbuf* filter = nullptr);
AcDbObjectIdArray selectWindow(const AcDbDatabase* db, const AcGePoint3d& c1, const AcGePoint3d& c2,
                               const resbuf* filter = nullptr);
AcDbObjectIdArray selectCrossing(const AcDbDatabase* db, const AcGePoint3d& c1, const AcGePoint3d& c2,
                                 const resbuf* filter = nullptr);
int getPoint(const std::string& prompt, AcGePoint3d& point);
int getString(const std::string& prompt, std::string& text);
// Reads "x,y" or "x,y,z"; false when the text is not a point.
bool parsePoint(const std::string& text, AcGePoint3d& point);

// What a view draws: the current view of each document and a count that
// grows with every display update.
AcDbViewTableRecord currentView(const AcApDocument* doc);
void setCurrentView(const AcApDocument* doc, const AcDbViewTableRecord& view);
unsigned displayGeneration();
// Highlighted entities of model space (highlighting is a display state of
// each entity; see AcDbEntity::highlight).
AcDbObjectIdArray highlightedEntities(const AcDbDatabase* db);

// A view (the desktop window's) that wants to hear about display changes.
class ViewObserver {
 public:
  virtual ~ViewObserver() = default;
  virtual void displayUpdated() {}
  virtual void viewChanged(const AcApDocument* /*doc*/) {}
};
void addViewObserver(ViewObserver* observer);
void removeViewObserver(ViewObserver* observer);

}  // namespace host::ed

// The drawing view: what it draws (colours, layers, linetypes, texts,
// blocks, highlights), how it zooms, and the picks and snaps it reports.
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <cmath>

#include "app/gui/view/aci_colours.h"
#include "app/gui/view/drawing_view.h"
#include "app/gui/view/layouts.h"
#include "app/gui/view/text_codes.h"
#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"

#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

using gui::DrawingView;

namespace {

AcDbObjectId add(AcDbDatabase& db, AcDbEntity* e, AcDbObjectId block = AcDbObjectId::kNull) {
  AcDbObjectId id;
  host::appendEntity(&db, e, id, block);
  return id;
}

AcDbObjectId layer(AcDbDatabase& db, const char* name, int colour) {
  AcDbObjectId id;
  host::findLayer(&db, name, id, true);
  AcDbObjectPointer<AcDbLayerTableRecord> rec(id, AcDb::kForWrite);
  AcCmColor c;
  c.setColorIndex(static_cast<std::uint16_t>(colour));
  rec->setColor(c);
  return id;
}

template <class T>
T* on(T* e, AcDbObjectId layerId) {
  e->setLayer(layerId);
  return e;
}

// How many pixels of the image have the colour (exactly).
int pixelsOf(const QImage& image, QRgb colour) {
  int n = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) n += (image.pixel(x, y) & 0xFFFFFF) == (colour & 0xFFFFFF);
  return n;
}

}  // namespace

class DrawingViewTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void textCodesBecomeSymbols() {
    QCOMPARE(QString::fromStdString(gui::PlainText("%%c10 %%p0.1 90%%d 100%%% %%uA%%u%%176")),
             QString("Ø10 ±0.1 90° 100% A°"));
    const auto lines = gui::PlainMTextLines("{\\fSimSun|b0;刀具}\\P\\H2x;Ø%%c8\\~\\S1^2;");
    QCOMPARE(lines.size(), std::size_t(2));
    QCOMPARE(QString::fromStdString(lines[0]), QString("刀具"));
    QCOMPARE(QString::fromStdString(lines[1]), QString("ØØ8 1/2"));
    QCOMPARE(QString::fromStdString(gui::PlainMTextLines("\\A1;75\\S0^ -0.05;")[0]), QString("75 0/-0.05"));
    QCOMPARE(gui::AciToRgb(1), 0xFF0000u);
    QCOMPARE(gui::AciToRgb(5), 0x0000FFu);
    QCOMPARE(gui::AciToRgb(10), 0xFF0000u);  // first hue, full shade
  }

  void layersColoursAndLinetypesDecideWhatIsDrawn() {
    AcDbDatabase db;
    const AcDbObjectId red = layer(db, "RED", 1), frozen = layer(db, "FROZEN", 3), off = layer(db, "OFF", 4);
    add(db, on(new AcDbLine({0, 0, 0}, {100, 0, 0}), red));
    add(db, on(new AcDbLine({0, 10, 0}, {100, 10, 0}), frozen));
    add(db, on(new AcDbLine({0, 20, 0}, {100, 20, 0}), off));
    auto* blue = new AcDbLine({0, 30, 0}, {100, 30, 0});
    blue->setColorIndex(5);
    add(db, blue);
    auto* orange = new AcDbLine({0, 40, 0}, {100, 40, 0});
    AcCmColor tc;
    tc.setTrueColor(0xFF8000);
    orange->setColor(tc);
    add(db, orange);
    {
      AcDbObjectPointer<AcDbLayerTableRecord> f(frozen, AcDb::kForWrite);
      f->setIsFrozen(true);
      AcDbObjectPointer<AcDbLayerTableRecord> o(off, AcDb::kForWrite);
      o->setIsOff(true);
    }
    DrawingView view;
    view.resize(400, 300);
    view.SetDrawing(&db);
    QCOMPARE(view.Scene().EntityCount(), std::size_t(3));  // frozen and off layers are left out
    const QImage image = view.grab().toImage();
    QVERIFY(pixelsOf(image, 0xFF0000) > 200);  // layer colour
    QVERIFY(pixelsOf(image, 0x0000FF) > 200);  // own colour index
    QVERIFY(pixelsOf(image, 0xFF8000) > 200);  // true colour
    QCOMPARE(pixelsOf(image, 0x00FF00), 0);
    QCOMPARE(pixelsOf(image, 0x00FFFF), 0);
  }

  void aDashedLinetypeIsDrawnInDashes() {
    AcDbDatabase db;
    AcDbObjectId dashed;
    {
      AcDbObjectPointer<AcDbLinetypeTable> table(db.linetypeTableId(), AcDb::kForWrite);
      auto* rec = new AcDbLinetypeTableRecord;
      rec->setName("DASHED");
      rec->setDashes({5, -5});
      rec->setPatternLength(10);
      table->add(dashed, rec);
      rec->close();
    }
    auto* line = new AcDbLine({0, 0, 0}, {100, 0, 0});
    line->setLinetype(dashed);
    line->setColorIndex(1);
    add(db, line);
    DrawingView view;
    view.resize(440, 100);
    view.SetDrawing(&db);
    const QImage image = view.grab().toImage();
    // Along the line, red and background alternate ten times.
    const QPointF a = view.ToScreen({0.5, 0}), b = view.ToScreen({94.5, 0});  // the last dash ends at 95
    int runs = 0;
    bool was = false;
    for (int x = static_cast<int>(a.x()); x <= static_cast<int>(b.x()); ++x) {
      const bool red = (image.pixel(x, static_cast<int>(std::lround(a.y()))) & 0xFFFFFF) == 0xFF0000;
      runs += red && !was;
      was = red;
    }
    QCOMPARE(runs, 10);
  }

  void multiLineTextWrapsAtItsWidth() {
    AcDbDatabase db;
    for (const char* contents : {"a long paragraph of words that will not fit on one line of the box",
                                 "刀具的包络线由轮廓计算得到并写回图纸中作为闭合的多段线"}) {
      auto* m = new AcDbMText;
      m->setLocation({0, 0, 0});
      m->setTextHeight(2.5);
      m->setWidth(30);
      m->setContents(contents);
      add(db, m);
    }
    DrawingView view;
    view.resize(400, 400);
    view.SetDrawing(&db);
    const QRectF box = view.Scene().Extents();
    QVERIFY2(box.width() <= 31, qPrintable(QString::number(box.width())));
    QVERIFY(box.height() > 4 * 2.5);  // several lines each
  }

  void hatchPatternLinesKeepTheirDashesAndShiftFromLineToLine() {
    AcDbDatabase db;
    auto* hatch = new AcDbHatch;
    hatch->setPattern("DASHES", false);
    hatch->setColorIndex(1);
    hatch->appendLoop({0, {{{0, 0}, 0}, {{60, 0}, 0}, {{60, 20}, 0}, {{0, 20}, 0}}});
    // One family: horizontal lines 5 apart, each shifted 3 along from the
    // one below, dash 4 gap 2.
    for (const auto& [code, value] : std::vector<std::pair<short, double>>{
             {53, 0}, {43, 0}, {44, 0}, {45, 3}, {46, 5}, {49, 4}, {49, -2}})
      hatch->extras().unmodelled.push_back(GroupValue::fromReal(code, value));
    add(db, hatch);
    DrawingView view;
    view.resize(640, 240);
    view.SetDrawing(&db);
    const QImage image = view.grab().toImage();
    auto runsAlong = [&](double y) {
      const QPointF a = view.ToScreen({0.3, y}), b = view.ToScreen({59.7, y});
      int runs = 0;
      bool was = false;
      const int row = static_cast<int>(std::lround(a.y()));
      for (int x = static_cast<int>(a.x()); x <= static_cast<int>(b.x()); ++x) {
        bool red = false;
        for (int y = row - 1; y <= row + 1; ++y) red = red || (image.pixel(x, y) & 0xFFFFFF) == 0xFF0000;
        runs += red && !was;
        was = red;
      }
      return runs;
    };
    QCOMPARE(runsAlong(10), 10);  // dashes from 6 on: [6,10] ... [54,58] and [0,4]
    QCOMPARE(runsAlong(5), 11);   // shifted by 3: [0,1], [3,7] ... [57,60]
  }

  void blocksAttributesTextsAndHatchesAreDrawnAndPickedAsOne() {
    AcDbDatabase db;
    AcDbObjectId blockId;
    {
      AcDbObjectPointer<AcDbBlockTable> table(db.blockTableId(), AcDb::kForWrite);
      auto* rec = new AcDbBlockTableRecord;
      rec->setName("FRAME");
      table->add(blockId, rec);
      rec->close();
    }
    auto* inner = new AcDbLine({0, 0, 0}, {10, 0, 0});
    inner->setColorIndex(0);  // by block
    add(db, inner, blockId);
    auto* ref = new AcDbBlockReference({50, 50, 0}, blockId);
    ref->setColorIndex(3);
    ref->setScaleFactors(AcGeScale3d(2, 2, 2));
    const AcDbObjectId refId = add(db, ref);
    {
      AcDbObjectPointer<AcDbBlockReference> r(refId, AcDb::kForWrite);
      auto* att = new AcDbAttribute;
      att->setPosition({50, 60, 0});
      att->setHeight(5);
      att->setTextString("T-1001");
      r->appendAttribute(att);
      att->close();
    }
    auto* hatch = new AcDbHatch;
    hatch->setColorIndex(4);
    hatch->appendLoop({0, {{{0, 0}, 0}, {{20, 0}, 0}, {{20, 20}, 0}, {{0, 20}, 0}}});
    add(db, hatch);
    add(db, new AcDbText({0, 80, 0}, "%%c10 刀具", 5));
    DrawingView view;
    view.resize(400, 400);
    view.SetDrawing(&db);
    QCOMPARE(view.Scene().EntityCount(), std::size_t(3));
    const QImage image = view.grab().toImage();
    QVERIFY(pixelsOf(image, 0x00FF00) > 30);   // the block's line in the reference's colour
    QVERIFY(pixelsOf(image, 0x00FFFF) > 1000); // the solid hatch filled
    // The block's line, the attribute: one entity, the reference.
    QCOMPARE(view.Scene().Pick({60, 50}, 0.5), refId);
    const auto inside = view.Scene().Select(QRectF(40, 40, 60, 30), false);
    QCOMPARE(inside.size(), std::size_t(1));
    QVERIFY(view.Scene().Extents().top() <= 0 && view.Scene().Extents().bottom() >= 85);
  }

  void highlightedEntitiesStandOut() {
    AcDbDatabase db;
    auto* line = new AcDbLine({0, 0, 0}, {100, 100, 0});
    line->setColorIndex(1);
    const AcDbObjectId id = add(db, line);
    DrawingView view;
    view.resize(300, 300);
    view.SetDrawing(&db);
    QVERIFY(pixelsOf(view.grab().toImage(), 0xFF0000) > 100);
    {
      AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
      e->highlight();
    }
    view.Scene().RefreshHighlights();
    view.Redraw();
    const QImage image = view.grab().toImage();
    QCOMPARE(pixelsOf(image, 0xFF0000), 0);
    QVERIFY(pixelsOf(image, 0xFFA000) > 100);
  }

  void changedEntitiesAreRedrawnOneByOne() {
    AcDbDatabase db;
    const AcDbObjectId a = add(db, new AcDbLine({0, 0, 0}, {10, 0, 0}));
    DrawingView view;
    view.resize(200, 200);
    view.SetDrawing(&db);
    const AcDbObjectId b = add(db, new AcDbLine({0, 5, 0}, {10, 5, 0}));
    view.Scene().Refresh(b);
    QCOMPARE(view.Scene().EntityCount(), std::size_t(2));
    host::eraseObject(a);
    view.Scene().Refresh(a);
    QCOMPARE(view.Scene().EntityCount(), std::size_t(1));
    QCOMPARE(view.Scene().Pick({5, 0}, 0.1), AcDbObjectId::kNull);
    QCOMPARE(view.Scene().Pick({5, 5}, 0.1), b);
  }

  void everyLayoutIsReachableByItsNameInTabOrder() {
    // ezdxf writes the layouts: their names and tab order live in the
    // layout objects, not in the block records.
    QTemporaryDir dir;
    const QString path = dir.filePath("layouts.dxf");
    const QString script = QString(
        "import ezdxf, sys\n"
        "doc = ezdxf.new('R2010')\n"
        "doc.modelspace().add_line((0, 0), (1, 1))\n"
        "doc.layouts.rename('Layout1', 'Sheet A')\n"
        "b = doc.layouts.new('Sheet B')\n"
        "b.add_line((0, 0), (5, 0)); b.add_circle((0, 0), 2)\n"
        "doc.layouts.get('Sheet A').add_line((0, 0), (0, 5))\n"
        "doc.saveas(sys.argv[1])\n");
    if (QProcess::execute("/usr/bin/python3", {"-c", script, path}) != 0) QSKIP("python3-ezdxf is not installed");
    host::dxf::DxfDrawing drawing;
    host::dxf::Diagnostics diag;
    QVERIFY2(host::dxf::readDxfFile(path.toStdString(), drawing, diag), diag.error.c_str());
    const AcDbDatabase* db = drawing.database.get();
    const auto layouts = gui::DrawingLayouts(db);
    QCOMPARE(layouts.size(), std::size_t(3));
    QCOMPARE(layouts[0].name, QString("模型"));
    QCOMPARE(layouts[0].block, db->modelSpaceId());
    QCOMPARE(layouts[1].name, QString("Sheet A"));
    QCOMPARE(layouts[2].name, QString("Sheet B"));
    gui::DrawingScene scene;
    scene.Build(db, layouts[2].block);
    QCOMPARE(scene.EntityCount(), std::size_t(2));
    scene.Build(db, layouts[1].block);
    QCOMPARE(scene.EntityCount(), std::size_t(1));
  }

  void theWheelZoomsAboutTheCursorAndExtentsShowEverything() {
    AcDbDatabase db;
    add(db, new AcDbLine({-50, -20, 0}, {150, 80, 0}));
    DrawingView view;
    view.resize(400, 300);
    view.SetDrawing(&db);
    const QRectF all = view.VisibleWorld();
    QVERIFY(all.contains(QRectF(-50, -20, 200, 100)));
    const QPointF cursor(100, 80), before = view.ToWorld(cursor);
    view.ZoomAbout(cursor, 1.25 * 1.25);
    const QPointF after = view.ToWorld(cursor);
    QVERIFY(std::hypot(after.x() - before.x(), after.y() - before.y()) < 1e-9);
    QVERIFY(view.VisibleWorld().width() < all.width() / 1.5);
    view.ZoomExtents();
    QVERIFY(view.VisibleWorld().contains(QRectF(-50, -20, 200, 100)));
  }

  void snapsFindEndsMiddlesCentresAndCrossings() {
    AcDbDatabase db;
    add(db, new AcDbLine({0, 0, 0}, {100, 0, 0}));
    add(db, new AcDbLine({50, -50, 0}, {50, 50, 0}));
    add(db, new AcDbArc({200, 0, 0}, 20, 0, M_PI));
    DrawingView view;
    view.resize(600, 300);
    view.SetDrawing(&db);
    auto snapNear = [&](QPointF world) { return view.SnapAt(view.ToScreen(world)); };
    const auto end = snapNear({1, 1});
    QVERIFY(end && end->kind == gui::Snap::kEndpoint && end->point == QPointF(0, 0));
    const auto cross = snapNear({50.5, 0.5});
    QVERIFY(cross && cross->kind == gui::Snap::kIntersection);
    QVERIFY(std::hypot(cross->point.x() - 50, cross->point.y()) < 1e-9);
    const auto mid = snapNear({25.5, 0.5});
    QVERIFY(mid && mid->kind == gui::Snap::kNearest);  // the middle of the line is 25 units away
    const auto lineMid = snapNear({50.4, 49});
    QVERIFY(lineMid && lineMid->kind == gui::Snap::kEndpoint);
    const auto centre = snapNear({200.5, 0.5});
    QVERIFY(centre && (centre->kind == gui::Snap::kCentre || centre->kind == gui::Snap::kEndpoint));
    const auto arcTop = snapNear({200.3, 20.2});
    QVERIFY(arcTop && arcTop->kind == gui::Snap::kMidpoint);
    QVERIFY(std::hypot(arcTop->point.x() - 200, arcTop->point.y() - 20) < 1e-6);
    QVERIFY(!snapNear({150, 100}));
  }

  void picksWindowsCrossingsEnterAndEsc() {
    AcDbDatabase db;
    const AcDbObjectId line = add(db, new AcDbLine({0, 0, 0}, {100, 0, 0}));
    add(db, new AcDbLine({0, 50, 0}, {100, 100, 0}));
    DrawingView view;
    view.resize(400, 400);
    view.SetDrawing(&db);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.SetMode(DrawingView::Mode::kPickEntities);
    QSignalSpy picked(&view, &DrawingView::EntityPicked), window(&view, &DrawingView::WindowPicked),
        finished(&view, &DrawingView::PickFinished), cancelled(&view, &DrawingView::PickCancelled);
    QTest::mouseClick(&view, Qt::LeftButton, {}, view.ToScreen({50, 0}).toPoint());
    QCOMPARE(picked.size(), 1);
    QCOMPARE(picked[0][0].value<AcDbObjectId>(), line);
    // Left to right: a window; right to left: a crossing.
    QTest::mousePress(&view, Qt::LeftButton, {}, view.ToScreen({-10, -10}).toPoint());
    QTest::mouseMove(&view, view.ToScreen({110, 20}).toPoint());
    QTest::mouseRelease(&view, Qt::LeftButton, {}, view.ToScreen({110, 20}).toPoint());
    QCOMPARE(window.size(), 1);
    QCOMPARE(window[0][1].toBool(), false);
    QTest::mousePress(&view, Qt::LeftButton, {}, view.ToScreen({110, 60}).toPoint());
    QTest::mouseMove(&view, view.ToScreen({-10, -10}).toPoint());
    QTest::mouseRelease(&view, Qt::LeftButton, {}, view.ToScreen({-10, -10}).toPoint());
    QCOMPARE(window.size(), 2);
    QCOMPARE(window[1][1].toBool(), true);
    const QRectF r = window[1][0].toRectF();
    QCOMPARE(view.Scene().Select(r, false).size(), std::size_t(1));
    QCOMPARE(view.Scene().Select(r, true).size(), std::size_t(2));
    QTest::keyClick(&view, Qt::Key_Return);
    QCOMPARE(finished.size(), 1);
    QTest::mouseClick(&view, Qt::RightButton);
    QCOMPARE(finished.size(), 2);
    QTest::keyClick(&view, Qt::Key_Escape);
    QCOMPARE(cancelled.size(), 1);
    view.SetMode(DrawingView::Mode::kPickPoint);
    QSignalSpy point(&view, &DrawingView::PointPicked);
    QTest::mouseClick(&view, Qt::LeftButton, {}, view.ToScreen({99.6, 0.3}).toPoint());
    QCOMPARE(point.size(), 1);
    QCOMPARE(point[0][0].toPointF(), QPointF(100, 0));  // snapped to the end
  }
};

Q_DECLARE_METATYPE(AcDbObjectId)

QTEST_MAIN(DrawingViewTest)
#include "drawing_view_test.moc"

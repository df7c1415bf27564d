// Every real 2θ scan in the shared data folder loads with the grid its source documents
// (point count, start, step, wavelength as recorded with the file), and the files that hold
// no 2θ scan are refused with a message.
#include <gtest/gtest.h>

#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "core/pattern/pattern_reading.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

struct Expected {
  const char* file;
  OpenFormat format;
  int count;
  double start, step, wavelength;
};

// Values from the instruments' own metadata and the file descriptions kept with the data.
const Expected kScans[] = {
    {"xrdml/yadg_210520step1_30min.xrdml", OpenFormat::Xrdml, 4489, 5.00835563, 0.0167113, 1.5405980},
    {"xrdml/acdata_Panalytical_v1.3.XRDML", OpenFormat::Xrdml, 1731, 5.013, 0.026, 1.5405980},
    {"xrdml/fairmat_XRD-918-16_10_v1.6_crlf.xrdml", OpenFormat::Xrdml, 5027, 4.00656514, 0.01313, 1.5405980},
    {"xrdml/xylib_empyrean.xrdml", OpenFormat::Xrdml, 196, 30.05, 0.06, 1.5405980},
    {"xrdml/fairmat_m82762_rsm_101scans_listPositions.xrdml", OpenFormat::Xrdml, 255, 67.45053915, 0.0098436, 1.5405980},
    {"xy/yadg_210520step1_30min.xy", OpenFormat::Xy, 4489, 5.00835563, 0.0167113, 1.5406},
    {"xy/gsas2tut_x3lactos_3col_esd_crlf.xye", OpenFormat::Xy, 4776, 3.0, 0.005, 1.5406},
    {"xy/combs_C61Br2_sdpdrr2_0.79764A_title.XY", OpenFormat::Xy, 3548, 1.5, 0.01, 1.5406},
    {"xy/combs_SDPDRR1_sample2_Cu.XY", OpenFormat::Xy, 4651, 7.0, 0.02, 1.5406},
    {"xy/dash_Tutorial_04_CoKa1_1.78897A_tabs.xye", OpenFormat::Xy, 2701, 7.0, 0.02, 1.5406},
    {"xy/dioptas_pattern_001_pyFAI_hash_header.xy", OpenFormat::Xy, 1389, 0.0159, 0.0317970, 1.5406},
    {"xy/xylib_pesa_cr_only.txt", OpenFormat::Xy, 41, 4.2, 0.05, 1.5406},
    {"xy/xylib_xy_text_crlf.txt", OpenFormat::Xy, 4001, 20.0, 0.02, 1.5406},
    {"xy/pyobjcryst_cpd-1a_QARR.prn", OpenFormat::Xy, 7251, 5.0, 0.02, 1.5406},
    {"x_y/acdata_Panalytical_ASC_export_pair_of_xrdml.ASC", OpenFormat::XYVelm, 1731, 5.013, 0.026, 1.5406},
    {"chi/chiplotter_LaB6_0003_fit2d.chi", OpenFormat::Chi, 1500, 0.71956, 0.0070606, 1.5406},
    {"chi/rxylib_ExampleChiPlot.chi", OpenFormat::Chi, 10, 1.0, 1.0, 1.5406},
    {"std/fox_cime_start_step_end.dat", OpenFormat::Std, 7699, 8.01, 0.01, 1.5406},
    {"std/fox_pbso4_xray_rrr_title_on_line1.dat", OpenFormat::Std, 6001, 10.0, 0.025, 1.5406},
    {"uxd/xylib_BT86_.UXD", OpenFormat::Uxd, 2374, 3.0, 0.015592, 1.5406},
    {"uxd/dxtools_Temperature_v3_22ranges.uxd", OpenFormat::Uxd, 501, 61.5, 0.01, 1.5406},
    {"pdcif/cod_1517474_Zn2dobdc_bt1_neutron.cif", OpenFormat::Cif, 3296, 1.5, 0.05, 2.0785},
    {"pdcif/pdcifplotter_ALUMINA_gsas2cif_CWneutron_esd.cif", OpenFormat::Cif, 3300, 3.0, 0.05, 1.5402},
    {"pdcif/pdcifplotter_vb5042sup1_CoKa_wavelength_loop.cif", OpenFormat::Cif, 6092, 10.01687, 0.01313, 1.78892},
};

struct NotAScan {
  const char* file;
  OpenFormat format;
};
const NotAScan kRefused[] = {
    {"uxd/mtex_bruker_2THETACPS_polefigure_68ranges.UXD", OpenFormat::Uxd},
    {"uxd/nisttexture_fss_CoKa_polefigure_multirange_crlf.UXD", OpenFormat::Uxd},
    {"xrdml/mtex_polefigure_v1.2_phi_scans_2theta_common.xrdml", OpenFormat::Xrdml},
    {"pdcif/pdcifplotter_NISI_TOF_6blocks.cif", OpenFormat::Cif},
    {"std/xylib_D1A5_ILL_LaNi2Mn3Dx.dat", OpenFormat::Std},
    {"std/xylib_PSI_DMC_HRPT_NdNi4MgDx.dat", OpenFormat::Std},
    {"other/gsas2tut_FAP_gsas_std_CuKa.XRA", OpenFormat::Std},
};

struct Loaded {
  RecordingShell shell;
  test::TempDir dir;
  Session session{shell, dir.path()};
};

TEST(ReaderConformance, RealScansLoadWithTheirDocumentedGrid) {
  QUARVEL_REQUIRE_SHARED_DATA();
  for (const auto& e : kScans) {
    SCOPED_TRACE(e.file);
    Loaded l;
    const auto path = (test::sharedDataDir() / "patterns" / e.file).string();
    ASSERT_TRUE(readPatternFile(l.session, e.format, kSlotPattern, path)) << l.shell.lastMessage().text;
    const PatternSlot& s = l.session.store().pattern();
    EXPECT_EQ(s.count, e.count);
    EXPECT_NEAR(s.start, e.start, 1e-4);
    EXPECT_NEAR(s.step, e.step, 2e-6 + 1e-4 * e.step);
    EXPECT_NEAR(s.wavelength, e.wavelength, 1e-4);
    EXPECT_NEAR(s.end, s.start + (s.count - 1) * s.step, 1e-3);
    EXPECT_EQ(l.session.store().slot(kSlotAsLoaded).count, s.count);
  }
}

TEST(ReaderConformance, FilesWithoutATwoThetaScanAreRefusedWithAMessage) {
  QUARVEL_REQUIRE_SHARED_DATA();
  for (const auto& e : kRefused) {
    SCOPED_TRACE(e.file);
    Loaded l;
    EXPECT_FALSE(readPatternFile(l.session, e.format, kSlotPattern, (test::sharedDataDir() / "patterns" / e.file).string()));
    ASSERT_EQ(l.shell.messages.size(), 1u);
    EXPECT_EQ(l.session.store().pattern().count, 0);
  }
}

// The same measurement exported twice must give the same intensities.
TEST(ReaderConformance, CrossFormatPairsAgreePointByPoint) {
  QUARVEL_REQUIRE_SHARED_DATA();
  const std::pair<std::pair<const char*, OpenFormat>, std::pair<const char*, OpenFormat>> pairs[] = {
      {{"xrdml/yadg_210520step1_30min.xrdml", OpenFormat::Xrdml}, {"xy/yadg_210520step1_30min.xy", OpenFormat::Xy}},
      {{"xrdml/acdata_Panalytical_v1.3.XRDML", OpenFormat::Xrdml},
       {"x_y/acdata_Panalytical_ASC_export_pair_of_xrdml.ASC", OpenFormat::XYVelm}},
  };
  for (const auto& [a, b] : pairs) {
    Loaded la, lb;
    ASSERT_TRUE(readPatternFile(la.session, a.second, 1, (test::sharedDataDir() / "patterns" / a.first).string()));
    ASSERT_TRUE(readPatternFile(lb.session, b.second, 1, (test::sharedDataDir() / "patterns" / b.first).string()));
    const PatternSlot &sa = la.session.store().pattern(), &sb = lb.session.store().pattern();
    ASSERT_EQ(sa.count, sb.count);
    for (int i = 0; i < sa.count; ++i) ASSERT_NEAR(sa.y[i], sb.y[i], 0.5 + 1e-6 * sa.y[i]) << a.first << " point " << i;
  }
}

TEST(ReaderConformance, MultiRangeAndMultiScanFilesSayWhatWasLoaded) {
  QUARVEL_REQUIRE_SHARED_DATA();
  Loaded l;
  ASSERT_TRUE(readPatternFile(l.session, OpenFormat::Uxd, 1,
                              (test::sharedDataDir() / "patterns/uxd/dxtools_Sin2Psi_v3_spaces_18ranges.uxd").string()));
  ASSERT_FALSE(l.shell.notes.empty());
  EXPECT_NE(l.shell.notes.front().find("18 ranges"), std::string::npos);
  EXPECT_NEAR(l.session.store().wavelength.alpha2, 1.54439, 1e-5);  // "_WL2 = ..." with blanks
  EXPECT_NEAR(l.session.store().wavelength.ratio, 0.5, 1e-6);
}

}  // namespace
}  // namespace quarvel

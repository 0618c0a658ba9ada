#include "platform/info/KPPlatformInfo.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/base/KpSettings.h"
#include "tests/support/TestSettings.h"

namespace {

TEST(PlatformType, BitsComeFromTheSettingsAndDefaultToAClient) {
  struct {
    const char* ini;
    unsigned long bits;
  } cases[] = {
      {"", KPPI_PLATFORM_CLIENT},
      {"[Platform]\nnPlatformType = 1\n", 1},
      {"[Platform]\nnPlatformType = 3\n", 3},
      {"[Platform]\nnPlatformType = 2\n", 2},
      {"[Platform]\nnPlatformType = 0x4\n", 4},
      {"[Platform]\nnPlatformType = storenode\n", KPPI_PLATFORM_CLIENT},
  };
  for (const auto& c : cases) {
    TestSettings t(c.ini);
    KPPI_EventManager em;
    em.setFocus(KPPI_Focus::getFocus());
    EXPECT_EQ(em.getPlatformType(), c.bits) << c.ini;
    EXPECT_EQ(KPPlatformInfo().getKPPlatformType(), c.bits) << c.ini;
  }
}

TEST(ControlhostRecord, EachKindOfMachineFindsTheControlhostHostName) {
  {
    TestSettings t("[Platform]\nsPhysicalMachine = self01\n");
    KPPI_Controlhoster ch;
    ch.setFocus("Instance001");
    ASSERT_NE(ch.getControlhosterHostName(), nullptr);
    EXPECT_STREQ(ch.getControlhosterHostName(), "self01");  // the Controlhost is itself
    KPPI_Fleetmember fm;
    fm.setFocus("Instance001");
    EXPECT_EQ(fm.getControlhosterHostName(), nullptr);
    KPPI_Storenode sn;
    sn.setFocus("Instance001");
    EXPECT_EQ(sn.getControlhosterHostName(), nullptr);
  }
  {
    TestSettings t("[Controlhost]\nsHOSTNAME = ch.example:9000\n");
    KPPI_Fleetmember fm;
    fm.setFocus("Instance001");
    EXPECT_STREQ(fm.getControlhosterHostName(), "ch.example:9000");
    EXPECT_FALSE(fm.invalidKPPlatform());
  }
}

TEST(ControlhostRecord, PlatformIsInvalidWithoutASettingsFile) {
  TestSettings t;
  KpSettings::Instance().Load(t.dir() + "/missing.ini");
  KPPI_Fleetmember fm;
  fm.setFocus("Instance001");
  EXPECT_TRUE(fm.invalidKPPlatform());
}

TEST(PlatformInfo, ClientNamesAreCopiedTerminatedAndCutToTheBuffer) {
  TestSettings t(
      "[Platform]\nsPhysicalMachine = phys-machine-name\nsClientName = client-one\n"
      "[Controlhost]\nsCLIENTNAME = controlhost-client\n");
  KPPlatformInfo info("Instance001");
  EXPECT_EQ(info.getPhysicalMachine(), "phys-machine-name");

  char buf[8];
  memset(buf, 'Z', sizeof buf);
  EXPECT_EQ(info.getControlhosterClientName(buf, sizeof buf), 7);
  EXPECT_STREQ(buf, "client-");

  char full[257] = {};
  EXPECT_NE(info.findControlhosterClientName(full, 256), 0);
  EXPECT_STREQ(full, "controlhost-client");
  memset(buf, 'Z', sizeof buf);
  EXPECT_NE(info.findControlhosterClientName(buf, 5), 0);
  EXPECT_STREQ(buf, "cont");
}

TEST(PlatformInfo, MissingControlhostClientNameIsNotFound) {
  TestSettings t("[Platform]\nnPlatformType = 4\n");
  char buf[16] = "untouched";
  EXPECT_EQ(KPPlatformInfo().findControlhosterClientName(buf, sizeof buf), 0);
  EXPECT_STREQ(buf, "untouched");

  // On the Controlhost itself its own client name answers.
  t.Write("[Platform]\nnPlatformType = 1\nsClientName = ch-self\n");
  EXPECT_NE(KPPlatformInfo().findControlhosterClientName(buf, sizeof buf), 0);
  EXPECT_STREQ(buf, "ch-self");
}

TEST(PlatformInfo, PhysicalMachineDefaultsToTheHostName) {
  TestSettings t;
  char host[256] = {};
  gethostname(host, sizeof host - 1);
  EXPECT_EQ(KPPlatformInfo().getPhysicalMachine(), host);
}

TEST(Focus, ServiceProcessesAreDeclaredByEnvironmentOrCall) {
  TestSettings t;
  unsetenv("APPMGR_PROCESS_ROLE");
  KPPI_Focus::resetServiceProcess();
  EXPECT_FALSE(KPPI_Focus::AmIAService());
  setenv("APPMGR_PROCESS_ROLE", "service", 1);
  EXPECT_FALSE(KPPI_Focus::AmIAService()) << "the environment is read once";
  KPPI_Focus::resetServiceProcess();
  EXPECT_TRUE(KPPI_Focus::AmIAService());
  EXPECT_TRUE(KPPI_Focus::IsAServer());
  KPPI_Focus::setServiceProcess(false);
  EXPECT_FALSE(KPPI_Focus::AmIAService());
  unsetenv("APPMGR_PROCESS_ROLE");
  KPPI_Focus::setServiceProcess(true);
  EXPECT_TRUE(KPPI_Focus::AmIAService());
  KPPI_Focus::resetServiceProcess();
  EXPECT_FALSE(KPPI_Focus::AmIAService());

  EXPECT_EQ(KPPI_Focus::getFocus(), "Instance001");
  t.Write("[Platform]\nsFocus = Instance002\n");
  EXPECT_EQ(KPPI_Focus::getFocus(), "Instance002");
}

TEST(FeatureCache, OnlyANonZeroNumberEnablesAFeature) {
  TestSettings t(
      "[Features]\nAppMgrSvcLiteDisable = 1\nOff = 0\nGarbage = maybe\n");
  KpFeatureCache f(KPPI_Focus::getFocus());
  EXPECT_TRUE(f.IsFeatureEnabled("AppMgrSvcLiteDisable"));
  EXPECT_FALSE(f.IsFeatureEnabled("Off"));
  EXPECT_FALSE(f.IsFeatureEnabled("Garbage"));
  EXPECT_FALSE(f.IsFeatureEnabled("Absent"));
}

TEST(Client, ControlhostRecordGivesConnectStringAndInstallDirectory) {
  TestSettings t(
      "[Controlhost]\nsHOSTNAME = ch.example\nsCLIENTNAME = chc\nsINSTALLDIRECTORY = /opt/ch\n"
      "[Platform]\nsInstallDirectory = /opt/local\n");
  KPClient ch(2);
  EXPECT_EQ(ch.getNetworkHostnameMangled(), "chc@ch.example:8400,8402");
  std::string folder = "unchanged";
  EXPECT_EQ(ch.getInstallDirectory(folder, 1, nullptr), 0);
  EXPECT_EQ(folder, "/opt/ch");
  EXPECT_EQ(KPClient(1).getInstallDirectory(folder, 1, nullptr), 0);
  EXPECT_EQ(folder, "/opt/local");

  t.Write("");
  folder = "unchanged";
  EXPECT_NE(KPClient(2).getInstallDirectory(folder, 1, nullptr), 0);
  EXPECT_EQ(folder, "unchanged");
}

}  // namespace

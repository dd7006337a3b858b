// What the host sees when a job does not start or does not end: result, log, boxes, and what
// becomes of the lines it hands over all the same.
#include <algorithm>

#include "jobs/scene.h"
#include "sim/wire.h"

namespace {

using Block = std::array<std::uint8_t, qrn::sim::kParameterBlockBytes>;

struct Failure {
  const char* name;
  Scene scene;
  std::vector<int> boxes;
  std::vector<Expected> log;
};

void ExpectNoLines(const Outcome& outcome) {
  EXPECT_FALSE(outcome.linesTaken);
  EXPECT_EQ(0u, outcome.goodLineCalls);
  EXPECT_EQ(0u, outcome.linesReceived.value_or(0));
  EXPECT_EQ(0u, outcome.swathsTaken);
}

// Either family of exports, either language; the lines handed over behind the start are dropped.
void ExpectNoJob(Failure failure) {
  for (const bool lineApi : {true, false}) {
    for (const bool chinese : {false, true}) {
      SCOPED_TRACE(std::string(failure.name) + (lineApi ? ", line" : ", stream") +
                   (chinese ? ", Chinese" : ", English"));
      failure.scene.lineApi = lineApi;
      failure.scene.localeId = chinese ? 0x0804 : 0x0409;
      const Outcome outcome = Play(failure.scene);
      EXPECT_EQ(!lineApi, outcome.started);  // StartPrint never tells
      ExpectNoLines(outcome);
      EXPECT_EQ("", outcome.violation);
      EXPECT_EQ(BoxesOf(failure.boxes, chinese), outcome.boxes);
      EXPECT_TRUE(Tells(outcome.log, failure.log, chinese));
    }
  }
}

TEST(HostSees, APrinterThatCannotBeOpenedAndAThreadThatCannotBeHad) {
  using Bus = ScriptedPort::Bus;
  const auto notOpened = [](const char* name, Bus bus, std::vector<Expected> first) {
    Failure failure{name, {}, {31}, std::move(first)};
    failure.scene.bus = bus;
    failure.log.insert(failure.log.end(),
                       {{0, "无法开启目标设备，请确认连线已经正确或驱动已经安装成功 3-0-1"},
                        {0, "Error: 31"},
                        {500, "Wait swath Queue sended.0-0-0"},
                        {500, "All swath sended!"},
                        {500, "jobend: *"}});
    ExpectNoJob(failure);
  };
  notOpened("no printer", Bus::kEmpty, {{0, "打印机设备未连接"}});
  notOpened("held by another program", Bus::kHeld, {{0, "打印机设备未连接"}});
  notOpened("no list", Bus::kUnlistable,
            {{0, "ERROR   -   SetupDiGetClassDevs()"}, {0, "USB设备未连接"}});
  Failure noThread{"no thread",
                   {},
                   {},
                   {{0, "Create Tx thread fail!!!"},
                    {0, "Wait swath Queue sended.0-0-0"},
                    {0, "All swath sended!"},
                    {0, "jobend: *"}}};
  noThread.scene.failThreadStart = true;
  ExpectNoJob(noThread);
}

// A connect that fails with these lines; `error` 0: without a box. A box is open for 500 ms.
void ExpectConnectFails(const char* name, Scene scene, int error, std::vector<const char*> why) {
  const std::uint32_t closedMs = error != 0 ? 501 : 1, seenMs = error != 0 ? 600 : 100;
  Failure failure{name, std::move(scene), {}, {{0, "Connect"}, {0, "Tx Cmm 2-2(0)"}}};
  for (const char* line : why) failure.log.push_back({1, line});
  if (error != 0) {
    failure.boxes = {error};
    failure.log.push_back({1, "Error: " + std::to_string(error)});
  }
  failure.log.insert(failure.log.end(), {{closedMs, "FW错误 REPLY FAIL"},
                                         {seenMs, "指令(2)执行失败"},
                                         {seenMs, "Wait swath Queue sended.0-0-0"},
                                         {seenMs, "All swath sended!"},
                                         {closedMs + 1000, "Task end(1)!"},
                                         {kAnyTime, "jobend: *"}});
  ExpectNoJob(failure);
}

TEST(HostSees, ParametersThatCannotBeUsed) {
  const auto block = [](const char* name, void (*spoil)(Block&), std::size_t bytes, int error,
                        const char* why) {
    Block parameters = qrn::sim::ParameterBlock({});
    spoil(parameters);
    std::vector<std::uint8_t> reply = qrn::Words({2, 1, 0, 0});
    reply.insert(reply.end(), parameters.begin(),
                 parameters.begin() + static_cast<std::ptrdiff_t>(bytes));
    Scene scene;
    scene.script = {{2, 1, Spoiled::kSays, 0, qrn::sim::ReplyPacker().Pack(reply)}};
    ExpectConnectFails(name, std::move(scene), error, {why});
  };
  block(
      "signature", [](Block& b) { b[204] = 0x12; }, 208, 3, "不可识别打印机参数5212");
  block(
      "too short", [](Block&) {}, 206, 3, "不可识别打印机参数0");
  block(
      "head type", [](Block& b) { b[91] = 0x21; }, 208, 32,
      "图像支持喷头模式异常(仅支持DX5&DX7) mode:2");
  block(
      "selector", [](Block& b) { b[8] = 5; }, 208, 29, "步进计量输入值异常:360-0");
  block(
      "ink order", [](Block& b) { b[9] = 8; }, 208, 35, "双喷头机型墨序不可识别*");
}

TEST(HostSees, AnImageThatCannotBePrinted) {
  const auto image = [](const char* name, void (*ask)(HostJobDesc&), int error,
                        std::vector<const char*> why) {
    Scene scene;
    scene.describe = ask;
    ExpectConnectFails(name, std::move(scene), error, std::move(why));
  };
  image("720 dpi", [](HostJobDesc& d) { d.resX = 720; }, 0, {"不支持当前水平分辨率:720"});
  image("colours", [](HostJobDesc& d) { d.colors = 4; }, 32, {"图像颜色值异常:4!=8"});
  image("one bit", [](HostJobDesc& d) { d.bitsPerPixel = 1; }, 32, {"图像位模式异常:1!=2"});
  image("coarse", [](HostJobDesc& d) { d.resY = 359; }, 32,
        {"Vertical resolution too low: 359 < 360"});
  image("no lines", [](HostJobDesc& d) { d.resY = 0; }, 29, {"步进计量输入值异常:0-2540"});
  // 129600 x 254 / 14400 = 2286; 60000 x 254 / 6000 - 195 - 60 = 2285
  image("too wide", [](HostJobDesc& d) { d.width = 129600; }, 4,
        {"图像259200x*", "图像宽:259200(2286mm > 2285mm)", "打印图像超出机器最大宽度 2285"});
}

std::string NotReady(std::uint16_t status) {
  return "Rx 打印机未进入工作状态: " + std::to_string(status & 15) + "-" +
         std::to_string(status >> 4) + " ";
}

TEST(HostSees, AConnectThatIsRefusedForGood) {
  for (const std::uint16_t status :
       std::vector<std::uint16_t>{1, 2, 6, 0x4F, 0x60, 0x150, 0xFFFF}) {
    Scene scene;
    scene.script = {{2, 1, Spoiled::kSays, 0, {qrn::Reply({2, 0, 0, status})}}};
    ExpectConnectFails("refused", std::move(scene), 0, {NotReady(status).c_str()});
  }
}

// The host says every three seconds, at the next of its 100 ms polls, that it waits.
void AddWaiting(const std::string& line, std::uint32_t fromMs, std::uint32_t toMs,
                std::vector<Expected>* log) {
  for (std::uint32_t ms = fromMs + 3100; ms < toMs; ms += 3100) log->push_back({ms, line});
  std::stable_sort(log->begin(), log->end(),
                   [](const Expected& a, const Expected& b) { return a.ms < b.ms; });
}

TEST(HostSees, APrinterThatIsNotReadyYetEveryTwoSeconds) {
  Scene scene;
  std::vector<std::uint16_t> statuses = {0, 0, 3, 4, 5};
  for (std::uint16_t status = 0x50; status <= 0x5F; ++status) statuses.push_back(status);
  std::vector<Expected> log = {{0, "Connect"}, {0, "Tx Cmm 2-2(0)"}};
  std::uint32_t ms = 0, attempt = 0;
  for (const std::uint16_t status : statuses) {
    // The first ends in front of its status, which reads as 0.
    const qrn::Bytes reply = attempt == 0 ? qrn::Reply({2, 0, 0}) : qrn::Reply({2, 0, 0, status});
    scene.script.push_back({2, ++attempt, Spoiled::kSays, 0, {reply}});
    log.push_back({ms + 1, NotReady(status)});
    ms += 2001;
    log.push_back({ms, "Tx Cmm 2-2(" + std::to_string(attempt) + ")"});
  }
  AddWaiting("Cmm2 reply Waitting...", 0, ms, &log);
  log.push_back({42100, "Job create"});  // 21 x 2001 + 1, at the next poll
  const Outcome outcome = Play(scene);
  EXPECT_TRUE(outcome.started && outcome.printedWhole);
  EXPECT_TRUE(outcome.boxes.empty());
  EXPECT_TRUE(Tells(outcome.log, log));
}

// The attempts to reach a printer that is gone from `ms` on, up to the one that gives up.
std::vector<Expected> Attempts(std::uint32_t ms) {
  std::vector<Expected> log = {{ms, "Rx error:1167"}, {ms, "Rec fail!"}, {ms, "重新连接..."}};
  for (std::uint32_t attempt = 1; attempt <= 5; ++attempt) {
    log.push_back({ms, "打印机设备未连接"});
    log.push_back(
        {ms, "第" + std::to_string(attempt) + "连接失败(error code:1167),继续尝试连接..."});
    ms += 3000 + 1000 * attempt;
  }
  log.insert(log.end(), {{ms, "打印机设备未连接"}, {ms, "连接失败"}, {ms, "Error: 17"}});
  return log;
}

TEST(HostSees, APrinterThatIsGoneAtTheConnect) {
  Failure failure{"gone", {}, {17, 17}, Attempts(1)};
  failure.scene.script = {{2, 1, Spoiled::kLeaves}};
  failure.log.insert(failure.log.begin(), {{0, "Connect"}, {0, "Tx Cmm 2-2(0)"}});
  AddWaiting("Cmm2 reply Waitting...", 0, 30000, &failure.log);
  failure.log.insert(failure.log.end(), {{30100, "Cmm(2) Quit:1-0-0-0"},
                                         {30100, "Wait swath Queue sended.0-0-0"},
                                         {30100, "All swath sended!"},
                                         {30100, "Cmm(5) Quit:1-0-0-0"},
                                         {30501, "重新连接失败!"},
                                         {30501, "Error: 17"},
                                         {32001, "Task end(1)!"},
                                         {32100, "Tx task end delay:1000ms"},
                                         {32100, "jobend: *"}});
  ExpectNoJob(failure);
}

// Nobody closes the box: its thread is ended by force, and the second box never comes.
TEST(HostSees, AThreadThatABoxHoldsForLonger) {
  Failure failure{"box", {}, {17}, Attempts(1)};
  failure.scene.script = {{2, 1, Spoiled::kLeaves}};
  failure.scene.boxOpenMs = 3'600'000;
  failure.log.erase(failure.log.begin(), failure.log.end() - 2);
  failure.log[0].ms = failure.log[1].ms = 0;  // 30001
  failure.log.insert(failure.log.end(), {{99, "Cmm(2) Quit:1-0-0-0"},
                                         {99, "Wait swath Queue sended.0-0-0"},
                                         {99, "All swath sended!"},
                                         {99, "Cmm(5) Quit:1-0-0-0"},
                                         {99 + 21200, "强行退出TX线程,delay:20200ms"},
                                         {99 + 21200, "Tx task end delay:20200ms"},
                                         {99 + 21200, "jobend: *"}});
  ExpectNoJob(failure);
}

TEST(HostSees, ThatTheCommandWaitsWhileABoxIsOpen) {
  Failure failure{"seven seconds",
                  {},
                  {32},
                  {{0, "Connect"},
                   {0, "Tx Cmm 2-2(0)"},
                   {1, "图像颜色值异常:4!=8"},
                   {1, "Error: 32"},
                   {3100, "Cmm2 reply Waitting..."},
                   {6200, "Cmm2 reply Waitting..."},
                   {7001, "FW错误 REPLY FAIL"},
                   {7100, "指令(2)执行失败"}}};
  failure.scene.boxOpenMs = 7000;
  failure.scene.describe = [](HostJobDesc& desc) { desc.colors = 4; };
  ExpectNoJob(failure);
}

// The job was announced before anyone knew: it is ended properly.
TEST(HostSees, ThatThereIsNoMemory) {
  for (const bool chinese : {false, true}) {
    Scene scene;
    scene.localeId = chinese ? 0x0404 : 0x0409;
    // 14,861,760 x 254 / 14400 = 262144 mm, of which 16 bits count: 0; 1440 rows of 3,715,440 bytes
    // are 5,350,233,600, of which the log shows 32 bits
    scene.describe = [](HostJobDesc& desc) { desc.width = 14'861'760; };
    const Outcome outcome = Play(scene);
    EXPECT_TRUE(outcome.started);
    ExpectNoLines(outcome);
    EXPECT_EQ(BoxesOf({13}, chinese), outcome.boxes);
    EXPECT_TRUE(Tells(outcome.log,
                      {{0, "Tx Cmm 2-2(0)"},
                       {1, "图像29723520x*"},
                       {1, "mem: malloc pJob->Mem.pPassBuffer fail 0-1055266304!"},
                       {1, "Error: 13"},
                       {600, "Job create"},
                       {601, "Tx Cmm 3-3(0)"},
                       {700, "Job start"},
                       {700, "Wait swath Queue sended.0-0-0"},
                       {700, "All swath sended!"},
                       {702, "Tx Cmm 5-5(0)"},
                       {703, "Rx 作业结束"},
                       {803, "Task end(2)!"},
                       {kAnyTime, "jobend: *"}},
                      chinese));
  }
}

TEST(HostSees, AJobEndThatIsAnsweredLateOrNeverAgain) {
  Scene late;
  late.script = {{5, 1, Spoiled::kLate, 10'000}};
  Outcome outcome = Play(late);
  EXPECT_TRUE(outcome.printedWhole);
  // The host has waited for ten milliseconds when the thread takes the command up. It then gives
  // the thread, which idles for its 100 ms, a second to end.
  EXPECT_TRUE(Tells(outcome.log, {{0, "Tx Cmm 5-5(0)"},
                                  {3090, "Cmm5 reply Waitting..."},
                                  {6190, "Cmm5 reply Waitting..."},
                                  {9290, "Cmm5 reply Waitting..."},
                                  {10000, "hold:10000"},
                                  {10000, "Rx 作业结束"},
                                  {10100, "Task end(2)!"},
                                  {11090, "jobend: *"}}));
  Scene never;
  never.script = {{5, 1, Spoiled::kLeaves}};
  outcome = Play(never);
  EXPECT_TRUE(outcome.printedWhole);
  EXPECT_EQ(BoxesOf({17, 17}), outcome.boxes);
  std::vector<Expected> log = Attempts(1);
  log.insert(log.begin(), {0, "Tx Cmm 5-5(0)"});
  AddWaiting("Cmm5 reply Waitting...", static_cast<std::uint32_t>(-10), 30000, &log);
  log.insert(log.end(), {{30090, "Cmm(5) Quit:1-0-0-0"},
                         {30501, "重新连接失败!"},
                         {30501, "Error: 17"},
                         {32001, "Task end(1)!"},
                         {32090, "Tx task end delay:1000ms"},
                         {32090, "jobend: *"}});
  EXPECT_TRUE(Tells(outcome.log, log));
}

}  // namespace

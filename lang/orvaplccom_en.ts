<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
<context>
    <name>FrmJk</name>
    <message>
        <source>导出为CSV文件...</source>
        <translation>Export as CSV...</translation>
    </message>
    <message>
        <source>查找...</source>
        <translation>Find...</translation>
    </message>
    <message>
        <source>标秤记录</source>
        <translation>Calibration records</translation>
    </message>
    <message>
        <source>导出标秤记录</source>
        <translation>Export calibration records</translation>
    </message>
    <message>
        <source>CSV文件 (*.csv)</source>
        <translation>CSV files (*.csv)</translation>
    </message>
    <message>
        <source>已导出%1条记录到：
%2</source>
        <translation>%1 records exported to:
%2</translation>
    </message>
    <message>
        <source>导出失败：
%1
%2</source>
        <translation>Export failed:
%1
%2</translation>
    </message>
    <message>
        <source>查找记录</source>
        <translation>Find records</translation>
    </message>
    <message>
        <source>查找下一个</source>
        <translation>Find next</translation>
    </message>
    <message>
        <source>没有记录含“%1”</source>
        <translation>No record holds “%1”</translation>
    </message>
</context>
<context>
    <name>LinkTraceWindow</name>
    <message>
        <source>等待回复</source>
        <translation>Waiting</translation>
    </message>
    <message>
        <source>已确认</source>
        <translation>Acknowledged</translation>
    </message>
    <message>
        <source>否认(NAK)</source>
        <translation>NAK</translation>
    </message>
    <message>
        <source>已取回复</source>
        <translation>Reply taken</translation>
    </message>
    <message>
        <source>超时</source>
        <translation>Timed out</translation>
    </message>
    <message>
        <source>乱码</source>
        <translation>Garbage</translation>
    </message>
    <message>
        <source>过短</source>
        <translation>Short</translation>
    </message>
    <message>
        <source>过长</source>
        <translation>Long</translation>
    </message>
    <message>
        <source>迟到</source>
        <translation>Late</translation>
    </message>
    <message>
        <source>丢弃</source>
        <translation>Dropped</translation>
    </message>
    <message>
        <source>时间(ms)</source>
        <translation>Time (ms)</translation>
    </message>
    <message>
        <source>步号</source>
        <translation>Step</translation>
    </message>
    <message>
        <source>窗体</source>
        <translation>Form</translation>
    </message>
    <message>
        <source>器件</source>
        <translation>Device</translation>
    </message>
    <message>
        <source>数量</source>
        <translation>Count</translation>
    </message>
    <message>
        <source>发送</source>
        <translation>Sent</translation>
    </message>
    <message>
        <source>回复</source>
        <translation>Reply</translation>
    </message>
    <message>
        <source>用时(ms)</source>
        <translation>After (ms)</translation>
    </message>
    <message>
        <source>结果</source>
        <translation>Outcome</translation>
    </message>
    <message>
        <source>重发，%1</source>
        <translation>Re-sent, %1</translation>
    </message>
    <message>
        <source>通讯记录</source>
        <translation>Link trace</translation>
    </message>
    <message>
        <source>步号:</source>
        <translation>Step:</translation>
    </message>
    <message>
        <source>全部</source>
        <translation>All</translation>
    </message>
    <message>
        <source>结果:</source>
        <translation>Outcome:</translation>
    </message>
    <message>
        <source>重发</source>
        <translation>Re-sent</translation>
    </message>
    <message>
        <source>复制所选</source>
        <translation>Copy selected</translation>
    </message>
    <message>
        <source>全部保存...</source>
        <translation>Save all...</translation>
    </message>
    <message>
        <source>已复制 %1 行</source>
        <translation>%1 rows copied</translation>
    </message>
    <message>
        <source>保存通讯记录</source>
        <translation>Save link trace</translation>
    </message>
    <message>
        <source>文本文件 (*.txt)</source>
        <translation>Text files (*.txt)</translation>
    </message>
    <message>
        <source>已保存 %1 条通讯到 %2</source>
        <translation>%1 exchanges saved to %2</translation>
    </message>
    <message>
        <source>无法写入 %1</source>
        <translation>Cannot write %1</translation>
    </message>
</context>
<context>
    <name>OwnText</name>
    <message>
        <source>清水</source>
        <translation>Clear water</translation>
    </message>
    <message>
        <source>网络路径不存在，更改的数据未能同步，请先保证生产控制系统数据能正常同步后再重新设定！</source>
        <translation>The network path does not exist, so the changes were not synchronised. Make sure the production control system&apos;s data synchronise, then set again!</translation>
    </message>
    <message>
        <source>网络未联接，更改的数据未能同步，请在网络正常时重新设定！</source>
        <translation>The network is not connected, so the changes were not synchronised. Set again when the network is up!</translation>
    </message>
    <message>
        <source>恢复出厂设定失败!</source>
        <translation>Restoring the factory names failed!</translation>
    </message>
    <message>
        <source>秤名称</source>
        <translation>Scale</translation>
    </message>
    <message>
        <source>标秤时间</source>
        <translation>Calibration time</translation>
    </message>
    <message>
        <source>操作员</source>
        <translation>Operator</translation>
    </message>
    <message>
        <source>具体操作</source>
        <translation>Operation</translation>
    </message>
    <message>
        <source>AD信号值</source>
        <translation>AD value</translation>
    </message>
    <message>
        <source>重量值</source>
        <translation>Weight</translation>
    </message>
    <message>
        <source>砝码值</source>
        <translation>Test weight</translation>
    </message>
    <message>
        <source>标秤记录</source>
        <translation>Calibration records</translation>
    </message>
    <message>
        <source>日期</source>
        <translation>Date</translation>
    </message>
    <message>
        <source>零位跟踪功能已更改！</source>
        <translation>Zero tracking changed!</translation>
    </message>
    <message>
        <source>请检查!慢速配料值范围为:</source>
        <translation>Please check! The slow feed value must be in the range:</translation>
    </message>
    <message>
        <source>延时检查超差时间</source>
        <translation>Tolerance check delay</translation>
    </message>
    <message>
        <source>卸料延时控制时间</source>
        <translation>Discharge delay time</translation>
    </message>
    <message>
        <source>按键归零范围</source>
        <translation>Key zeroing range</translation>
    </message>
    <message>
        <source>标定方式选择</source>
        <translation>Calibration mode</translation>
    </message>
    <message>
        <source>S507调整方式</source>
        <translation>S507 adjustment mode</translation>
    </message>
    <message>
        <source>正在出厂设置,请稍候...</source>
        <translation>Factory setting in progress, please wait...</translation>
    </message>
    <message>
        <source>模拟提升</source>
        <translation>Simulated hoisting</translation>
    </message>
    <message>
        <source>提升斗标定错误，请重新标定!</source>
        <translation>Skip hoist calibration error, please calibrate again!</translation>
    </message>
    <message>
        <source>提升斗取消标定错误，请重新尝试!</source>
        <translation>Error cancelling the skip hoist calibration, please try again!</translation>
    </message>
    <message>
        <source>请检查!上升提前减速脉冲数的输入范围为:</source>
        <translation>Please check! The deceleration pulses going up must be in the range:</translation>
    </message>
    <message>
        <source>请检查!下降提前减速脉冲数的输入范围为:</source>
        <translation>Please check! The deceleration pulses going down must be in the range:</translation>
    </message>
    <message>
        <source>是否设定当前参数?</source>
        <translation>Set the current parameters?</translation>
    </message>
    <message>
        <source>正在设定参数,请稍候......</source>
        <translation>Setting the parameters, please wait......</translation>
    </message>
    <message>
        <source>骨料3振动器</source>
        <translation>Aggregate 3 vibrator</translation>
    </message>
    <message>
        <source>骨料4振动器</source>
        <translation>Aggregate 4 vibrator</translation>
    </message>
    <message>
        <source>骨料5振动器</source>
        <translation>Aggregate 5 vibrator</translation>
    </message>
    <message>
        <source>骨料6振动器</source>
        <translation>Aggregate 6 vibrator</translation>
    </message>
    <message>
        <source>外加粉振动器</source>
        <translation>Extra powder vibrator</translation>
    </message>
    <message>
        <source>水泥卸料振动器</source>
        <translation>Cement discharge vibrator</translation>
    </message>
    <message>
        <source>粉灰卸料振动器</source>
        <translation>Fly ash discharge vibrator</translation>
    </message>
    <message>
        <source>矿粉卸料振动器</source>
        <translation>Slag discharge vibrator</translation>
    </message>
    <message>
        <source>振动器振动时间设定</source>
        <translation>Vibrator times</translation>
    </message>
    <message>
        <source>骨料振动器</source>
        <translation>Aggregate vibrators</translation>
    </message>
    <message>
        <source>粉料振动器</source>
        <translation>Powder vibrators</translation>
    </message>
    <message>
        <source>计量振动间歇时间</source>
        <translation>Metering vibration pause</translation>
    </message>
    <message>
        <source>计量振动时间</source>
        <translation>Metering vibration time</translation>
    </message>
    <message>
        <source>卸料振动间歇时间</source>
        <translation>Discharge vibration pause</translation>
    </message>
    <message>
        <source>卸料振动时间</source>
        <translation>Discharge vibration time</translation>
    </message>
    <message>
        <source>间歇时间</source>
        <translation>Pause time</translation>
    </message>
    <message>
        <source>振动时间</source>
        <translation>Vibration time</translation>
    </message>
    <message>
        <source>秒</source>
        <translation>S</translation>
    </message>
    <message>
        <source>骨料1秤</source>
        <translation>Aggregate 1 scale</translation>
    </message>
    <message>
        <source>骨料2秤</source>
        <translation>Aggregate 2 scale</translation>
    </message>
    <message>
        <source>骨料3秤</source>
        <translation>Aggregate 3 scale</translation>
    </message>
    <message>
        <source>骨料4秤</source>
        <translation>Aggregate 4 scale</translation>
    </message>
    <message>
        <source>骨料5秤</source>
        <translation>Aggregate 5 scale</translation>
    </message>
    <message>
        <source>骨料6秤</source>
        <translation>Aggregate 6 scale</translation>
    </message>
    <message>
        <source>外加粉秤</source>
        <translation>Extra powder scale</translation>
    </message>
    <message>
        <source>水秤</source>
        <translation>Water scale</translation>
    </message>
    <message>
        <source>水泥秤</source>
        <translation>Cement scale</translation>
    </message>
    <message>
        <source>粉灰秤</source>
        <translation>Fly ash scale</translation>
    </message>
    <message>
        <source>矿粉秤</source>
        <translation>Slag scale</translation>
    </message>
    <message>
        <source>外加剂1秤</source>
        <translation>Admixture 1 scale</translation>
    </message>
    <message>
        <source>外加剂2秤</source>
        <translation>Admixture 2 scale</translation>
    </message>
    <message>
        <source>外加剂3秤</source>
        <translation>Admixture 3 scale</translation>
    </message>
    <message>
        <source>骨料1</source>
        <translation>Aggregate 1</translation>
    </message>
    <message>
        <source>骨料2</source>
        <translation>Aggregate 2</translation>
    </message>
    <message>
        <source>骨料3</source>
        <translation>Aggregate 3</translation>
    </message>
    <message>
        <source>骨料4</source>
        <translation>Aggregate 4</translation>
    </message>
    <message>
        <source>骨料5</source>
        <translation>Aggregate 5</translation>
    </message>
    <message>
        <source>骨料6</source>
        <translation>Aggregate 6</translation>
    </message>
    <message>
        <source>外加粉</source>
        <translation>Extra powder</translation>
    </message>
    <message>
        <source>水泥</source>
        <translation>Cement</translation>
    </message>
    <message>
        <source>粉灰</source>
        <translation>Fly ash</translation>
    </message>
    <message>
        <source>矿粉</source>
        <translation>Slag</translation>
    </message>
    <message>
        <source>外加剂1</source>
        <translation>Admixture 1</translation>
    </message>
    <message>
        <source>外加剂2</source>
        <translation>Admixture 2</translation>
    </message>
    <message>
        <source>外加剂3</source>
        <translation>Admixture 3</translation>
    </message>
    <message>
        <source>电子秤名称设定失败!</source>
        <translation>Setting the scale names failed!</translation>
    </message>
    <message>
        <source>料仓名称设定失败!</source>
        <translation>Setting the bin names failed!</translation>
    </message>
    <message>
        <source>“%1”不是月份：请写成 YYYY-MM，例如 2026-03</source>
        <translation>&quot;%1&quot; is not a month: give it as YYYY-MM, for example 2026-03</translation>
    </message>
    <message>
        <source>--from %1 晚于 --to %2</source>
        <translation>--from %1 is after --to %2</translation>
    </message>
    <message>
        <source>输出无法写入：</source>
        <translation>The output could not be written: </translation>
    </message>
</context>
</TS>

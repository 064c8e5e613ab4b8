<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
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
</context>
</TS>

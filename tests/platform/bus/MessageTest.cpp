#include "BusFixture.h"

#include "platform/bus/OfferedObject.h"

namespace korvex::platform::bus {
namespace {

constexpr const char* kPath = "/test";
constexpr const char* kInterface = "test.Messages";

using Row = std::tuple<std::string, Dictionary>;

/// A program that gives back what it is sent, and one that sends.
class MessageTest : public tests::BusFixture {
protected:
    MessageTest() {
        startDaemon();
        connect(m_peer);
        connect(m_bus);
    }

    template <typename Type>
    static Interface::Method echo(const std::string& name) {
        return Interface::method<Type>(
            name, [](IncomingCall& call, const Type& value) { call.reply(arguments(value)); },
            signatureOf<Type>());
    }

    /// What comes back; absent with the error in `m_error`.
    template <typename Type, typename Sent>
    std::optional<Type> echoed(const std::string& member, const Sent& sent) {
        std::optional<Type> result;
        m_error.reset();
        const auto asked = m_bus.call({.destination = m_peer.uniqueName(),
                                       .path = kPath,
                                       .interface = kInterface,
                                       .member = member},
                                      arguments(sent), [&](const Reply& reply) {
                                          if (reply.error()) {
                                              m_error = *reply.error();
                                          } else {
                                              result = reply.read<Type>();
                                          }
                                      });
        EXPECT_TRUE(m_loop.runUntil([&] { return result || m_error; }));
        return result;
    }
    template <typename Type>
    void expectEcho(const std::string& member, const Type& sent) {
        EXPECT_EQ(echoed<Type>(member, sent), sent) << member;
    }
    std::string errorName() const { return m_error ? m_error->name() : "no error"; }

    Bus m_peer{WhichBus::session, m_loop, m_log};
    Bus m_bus{WhichBus::session, m_loop, m_log};
    OfferedObject m_object{
        m_peer,
        kPath,
        {.name = kInterface,
         .methods = {echo<bool>("Bool"), echo<std::uint8_t>("Byte"), echo<std::int64_t>("Int64"),
                     echo<double>("Double"), echo<std::string>("String"), echo<ObjectPath>("Path"),
                     echo<base::Bytes>("Bytes"), echo<Value>("Value"),
                     echo<std::vector<Row>>("Rows"), echo<Dictionary>("Dictionary")}}};
    std::optional<BusError> m_error;
};

Value nested(int depth) {
    return depth == 0 ? Value("end") : Value(ValueStructure{{nested(depth - 1)}});
}

TEST_F(MessageTest, EveryTypeArrivesAsItWasSent) {
    expectEcho("Bool", true);
    expectEcho("Byte", std::uint8_t{255});
    expectEcho("Int64", std::int64_t{-1} << 40);
    expectEcho("Double", -0.5);
    expectEcho("String", std::string("Käse \xF0\x9F\xA7\x80"));
    expectEcho("String", std::string());
    expectEcho("Path", ObjectPath{"/a/b"});
    expectEcho("Bytes", base::Bytes{0, 1, 255});
    expectEcho("Bytes", base::Bytes());
    expectEcho("Rows", std::vector<Row>{{"one", {}}, {"two", {{"k", Value(true)}}}});
    expectEcho("Rows", std::vector<Row>());
    const Dictionary dictionary{
        {"bytes", Value(base::Bytes{1, 2})},
        {"inner", Value(Dictionary{{"x", Value(2.5)}})},
        {"none", Value(ValueArray{.element = "s"})},
        {"numbers", Value(ValueArray{.element = "q", .items = {Value(std::uint16_t{7})}})},
        {"pair", Value(ValueStructure{{Value(std::int32_t{-1}), Value("text")}})},
        {"path", Value(ObjectPath{"/"})}};
    expectEcho("Dictionary", dictionary);
    for (const auto& [name, value] : dictionary) {
        expectEcho("Value", value);
    }
    EXPECT_EQ(*find<ObjectPath>(dictionary, "path"), ObjectPath{"/"});
    EXPECT_FALSE(find<std::string>(dictionary, "path")) << "of another type";
    EXPECT_FALSE(find<std::string>(dictionary, "nowhere"));
}

TEST_F(MessageTest, WhatExceedsABoundIsRefusedAndNotRead) {
    const Bounds bounds;
    expectEcho("String", std::string(bounds.bytes, 'x'));
    EXPECT_FALSE(echoed<std::string>("String", std::string(bounds.bytes + 1, 'x')));
    EXPECT_EQ(errorName(), "org.freedesktop.DBus.Error.LimitsExceeded");
    EXPECT_FALSE(echoed<base::Bytes>("Bytes", base::Bytes(bounds.bytes + 1)));
    EXPECT_EQ(errorName(), "org.freedesktop.DBus.Error.LimitsExceeded");
    EXPECT_FALSE(echoed<std::vector<Row>>("Rows", std::vector<Row>(bounds.elements + 1)));
    EXPECT_EQ(errorName(), "org.freedesktop.DBus.Error.LimitsExceeded");
    const Row large{std::string(bounds.bytes, 'x'), {}};
    EXPECT_TRUE(echoed<std::vector<Row>>("Rows", std::vector<Row>(15, large)));
    ValueArray many{.element = "b", .items = {}};
    many.items.assign(bounds.elements + 1, Value(true));
    EXPECT_FALSE(echoed<Value>("Value", Value(many)));
    EXPECT_EQ(errorName(), "org.freedesktop.DBus.Error.LimitsExceeded");
    expectEcho("Value", nested(bounds.depth - 1));
    EXPECT_FALSE(echoed<Value>("Value", nested(bounds.depth + 1)));
    EXPECT_EQ(errorName(), "org.freedesktop.DBus.Error.LimitsExceeded");
}

TEST_F(MessageTest, WhatCannotBeSentIsSaidAndTheConnectionStays) {
    struct {
        Value value;
        BusErrorCase which;
    } const cases[] = {
        {Value(std::string("\xFF")), BusErrorCase::invalid},
        {Value(std::string("a\0b", 3)), BusErrorCase::invalid},
        {Value(ObjectPath{"no path"}), BusErrorCase::invalid},
        {Value(), BusErrorCase::invalid},
        {Value(ValueArray{.element = "s", .items = {Value(true)}}), BusErrorCase::invalid},
        {Value(std::string(MessageWriter::kMostBytes + 1, 'x')), BusErrorCase::tooLarge},
        {Value(base::Bytes(MessageWriter::kMostBytes + 1)), BusErrorCase::tooLarge},
    };
    for (const auto& each : cases) {
        EXPECT_FALSE(echoed<Value>("Value", each.value));
        ASSERT_TRUE(m_error);
        EXPECT_EQ(m_error->which(), each.which) << each.value.signature();
    }
    EXPECT_FALSE(m_bus.emit({.path = kPath, .interface = "no interface", .member = "X"}));
    expectEcho("String", std::string("still here"));
}

TEST_F(MessageTest, OtherTypesThanTheExpectedAreRefused) {
    EXPECT_FALSE(echoed<bool>("Bool", std::string("true")));
    EXPECT_EQ(errorName(), "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_FALSE(echoed<bool>("Missing", true));
    EXPECT_EQ(errorName(), "org.freedesktop.DBus.Error.UnknownMethod");

    // An answer of another type, and one of a type that is not known here.
    std::optional<BusErrorCase> which;
    std::optional<Value> value;
    const OfferedObject odd(
        m_peer, "/odd",
        {.name = "test.Odd",
         .methods = {Interface::method<>(
             "Get", [](IncomingCall& call) { call.reply(arguments(std::int32_t{1})); }, "i")},
         .properties = {{.name = "Odd", .type = "a{is}", .value = [](MessageWriter& writer) {
                             writer.write(std::vector<std::string>{});
                         }}}});
    const auto asked = m_bus.call({.destination = m_peer.uniqueName(),
                                   .path = "/odd",
                                   .interface = "test.Odd",
                                   .member = "Get"},
                                  {}, [&](const Reply& reply) {
                                      try {
                                          reply.read<std::string>();
                                      } catch (const BusError& error) {
                                          which = error.which();
                                      }
                                      reply.read<std::string, bool>(); // nobody catches it here
                                  });
    ASSERT_TRUE(m_loop.runUntil([&] { return which.has_value(); }));
    EXPECT_EQ(which, BusErrorCase::unreadable);
    EXPECT_EQ(m_log.count("Left aside an answer"), 1U);
}

} // namespace
} // namespace korvex::platform::bus

// Miscellaneous functions of the rule language: listings of what the engine
// holds, questions about its knowledge, its checking settings, guard and
// parse, and the date and time functions (DateTimeFunctions.cpp). More join
// the package as their constructs arrive.
#pragma once

#include "packages/TavoPackages.h"

namespace tavo {

// facts: the fact list of the current module, of a named one, or of all
// ("*"), narrowed by id range and count, and the total.
TAVO_FUNCTION(TShowFactsFunction)

// agenda: the activations of a module, or of all ("*"), in agenda order.
TAVO_FUNCTION(TAgendaFunction)

// list-defrules: the names of the rules of a module, or of all ("*").
TAVO_FUNCTION(TListRulesFunction)

// Listings of the current module, of a named one or of all ("*").
TAVO_FUNCTION(TListDefTypesFunction)
TAVO_FUNCTION(TListFactSetsFunction)
TAVO_FUNCTION(TListTemplatesFunction)

// Listings of what the engine holds as a whole.
TAVO_FUNCTION(TListFunctionsFunction)
TAVO_FUNCTION(TListDefModulesFunction)
TAVO_FUNCTION(TListFocusStackFunction)

// rules: the current module's rules, to a logical name.
TAVO_FUNCTION(TShowRulesFunction)

// Constraint checking, static (the parser's) and dynamic (slot values).
TAVO_FUNCTION(TGetDynamicCheckFunction)
TAVO_FUNCTION(TGetStaticCheckFunction)
TAVO_FUNCTION(TSetDynamicCheckFunction)
TAVO_FUNCTION(TSetStaticCheckFunction)

// set-reset-globals, setgen, guard, parse.
TAVO_FUNCTION(TResetGlobalsFunction)
TAVO_FUNCTION(TSetGenFunction)
TAVO_FUNCTION(TGuardFunction)
TAVO_FUNCTION(TTavoParseFunction)

// Removing constructs.
TAVO_FUNCTION(TUnDefTypeFunction)
TAVO_FUNCTION(TUnDefRuleFunction)
TAVO_FUNCTION(TUnDefFactsFunction)
TAVO_FUNCTION(TUnDefFunctionFunction)
TAVO_FUNCTION(TUnDefTemplateFunction)

// time: the seconds of the current local day, a float.
TAVO_FUNCTION(TTimeFunction)

// A class that serves several functions, one for each kind of TypeName,
// DefaultKind unless its maker says another.
#define TAVO_KIND_FUNCTION(ClassName, TypeName, DefaultKind)         \
  class ClassName : public TTavoUserFunction {                       \
    TAVO_FUNCTION_MEMBERS(ClassName)                                 \
    explicit ClassName(TypeName Type = DefaultKind) : FType(Type) {} \
    TypeName GetType() const { return FType; }                       \
                                                                     \
   private:                                                          \
    TypeName FType;                                                  \
  };

enum TListVariablesFunctionType { lvDefGlobals, lvBindings };

// list-defglobals and list-bindings: names and values, and the total.
TAVO_KIND_FUNCTION(TListVariablesFunction, TListVariablesFunctionType, lvDefGlobals)

enum TIsTavoStructFunctionType {
  sfIsBinding,
  sfIsDefType,
  sfIsDefFunction,
  sfIsDefGlobal,
  sfIsDefRule,
  sfIsDefFacts,
  sfIsDefTemplate
};

// is-binding, is-deftype and the rest: whether a name is known as that kind.
TAVO_KIND_FUNCTION(TIsTavoStructFunction, TIsTavoStructFunctionType, sfIsBinding)

enum TPrettyPrintFunctionType { ppfFactSet, ppfUserFunction, ppfFactTemplate, ppfRule, ppfDefType, ppfDefModule };

// ppdeffacts, ppdeffunction and the rest: a construct of the name, printed
// as rule-language text.
TAVO_KIND_FUNCTION(TPrettyPrintFunction, TPrettyPrintFunctionType, ppfFactSet)

// Date-time numbers count days from 1899-12-30, which is day 0, in the
// proleptic Gregorian calendar; the time of day is the fraction. A number's
// day is its floor, so days before 1899-12-30 are negative and a date plus a
// time is their sum: -0.75 is 1899-12-29 06:00. Years run from 1 to 9999,
// and a number decodes to the nearest millisecond.
struct TDateTimeParts {
  int Year = 1899;
  int Month = 12;
  int Day = 30;
  int Hour = 0;
  int Minute = 0;
  int Second = 0;
  int Millisecond = 0;
  int DayOfWeek = 6;  // 0 is Sunday
};

// The day number of a date; SInvalidDate for no such date.
double EncodeDate(int Year, int Month, int Day);
// The fraction of a day; SInvalidTime outside 00:00:00.000 to 23:59:59.999.
double EncodeTime(int Hour, int Minute, int Second, int Millisecond);
// SDateTimeOutOfRange outside the years 1 to 9999, and for NaN.
TDateTimeParts DecodeDateTime(double Value);

// The text forms of date-time numbers, fixed whatever the host's locale:
// "YYYY-MM-DD", "HH:MM:SS" and "YYYY-MM-DD HH:MM:SS", the seconds followed
// by ".mmm" when the milliseconds are not 0.
enum TDateTimeText { dttDate, dttTime, dttDateTime };

String DateTimeToText(double Value, TDateTimeText Kind);
// Reads what DateTimeToText writes, and also numbers with fewer digits
// ("2024-3-5 9:05"), times without seconds, one to three digits of a
// second's fraction, a "T" between date and time, and a date alone as a
// date-time. Blanks around the text are ignored. SInvalidDateTimeText for
// anything else.
double TextToDateTime(StringView Text, TDateTimeText Kind);
// The number written by a pattern; the letters, in either case:
//   yyyy year, yy its last two digits;   m mm month, mmm Jan, mmmm January;
//   d dd day, ddd Sun, dddd Sunday;      h hh hour (0 to 23);
//   n nn minute;   s ss second;          z milliseconds, zzz with three digits.
// The doubled letters pad to two digits. Text in single or double quotes is
// copied as it is, and so is every other character.
String FormatDateTime(StringView Pattern, double Value);

enum TSystemDateTimeFunctionType { sdtDateTime, sdtDate, sdtTime };

// system-datetime, system-date and system-time: now, today and the time of
// day, local, as date-time numbers.
TAVO_KIND_FUNCTION(TSystemDateTimeFunction, TSystemDateTimeFunctionType, sdtDateTime)

enum TDateTimeStringFunctionType {
  dtsStrDateTime,
  dtsStrDate,
  dtsStrTime,
  dtsDateTimeStr,
  dtsDateStr,
  dtsTimeStr,
  dtsDateTimeStrFormat
};

// str-datetime and the rest read a text as a date-time number;
// datetime-str and the rest write one as text, datetime-str-format by a
// pattern.
TAVO_KIND_FUNCTION(TDateTimeStringFunction, TDateTimeStringFunctionType, dtsStrDateTime)

enum TDecodeDateTimeFunctionType { ddtYear, ddtMonth, ddtDay, ddtHour, ddtMinute, ddtSecond, ddtMillisecond };

// decode-year and the rest: one part of a date-time number, an integer.
TAVO_KIND_FUNCTION(TDecodeDateTimeFunction, TDecodeDateTimeFunctionType, ddtYear)

enum TEncodeDateTimeFunctionType { edtDate, edtTime };

// encode-date and encode-time: the date-time number of a date's or a time's
// parts.
TAVO_KIND_FUNCTION(TEncodeDateTimeFunction, TEncodeDateTimeFunctionType, edtDate)

#undef TAVO_KIND_FUNCTION

class TMiscPackage : public TUserPackage {
  TAVO_CLASS(TMiscPackage, TUserPackage)
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override;
};

}  // namespace tavo

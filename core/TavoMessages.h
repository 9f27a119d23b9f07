// The message table: every failure text of the system, by constant name.
// Texts stand exactly as they are reported, slips included ("dype", "&s").
#pragma once

namespace tavo {

inline constexpr char16_t SInvalidName[] =
    u"Invalid expert system name, \"%s\", name must not contain any of the following characters:  '\"#()[]?:$&;<>";
inline constexpr char16_t SInvalidVariableName[] =
    u"Invalid expert system name, \"%s\", name must not contain any of the following characters:  '\"#()[]:$&;<>";
inline constexpr char16_t SInvalidFileAccess[] =
    u"Invalid File Access Specifier: \"%s\"";
inline constexpr char16_t SNoContext[] =
    u"No context found when trying to resolve a %s value";
inline constexpr char16_t SMissingNumeric[] =
    u"Expected numeric argument to %s function call";
inline constexpr char16_t SMissingComponent[] =
    u"Expected component argument to %s function call";
inline constexpr char16_t SMissingFuzzyCloseBracket[] =
    u"Missing Fuzzy Close Bracket in expression";
inline constexpr char16_t SMissingOpenParens[] =
    u"Expected \"(\"";
inline constexpr char16_t SMissingCloseParens[] =
    u"Expected \")\"";
inline constexpr char16_t SUnableFindFact[] =
    u"Unable to find fact f-%d";
inline constexpr char16_t SUnterminatedString[] =
    u"Invalid string value, string was not terminated";
inline constexpr char16_t SMissingCatchStatement[] =
    u"Missing catch or finally statement for try block";
inline constexpr char16_t SBadArgument[] =
    u"Bad Argument: %s";
inline constexpr char16_t SBadVariableName[] =
    u"Bad Variable Name, must start and end with an asterisk: %s";
inline constexpr char16_t SBadSlotName[] =
    u"Bad Slot Name: %s";
inline constexpr char16_t SNoIndexNameMatch[] =
    u"Index does not match fact slot name: %s and %s";
inline constexpr char16_t SBadSlotValue[] =
    u"Bad Slot Value: %s";
inline constexpr char16_t SBadSlotType[] =
    u"Bad Slot Type";
inline constexpr char16_t SBadValue[] =
    u"Bad Value for %s";
inline constexpr char16_t SCannotWatch[] =
    u"Cannot watch %s";
inline constexpr char16_t SCannotUnWatch[] =
    u"Cannot unwatch %s";
inline constexpr char16_t SInvalidBackchainPattern[] =
    u"Invalid backward chaining pattern added to the node";
inline constexpr char16_t SInvalidSlotDefault[] =
    u"Invalid default slot value: %s";
inline constexpr char16_t SInvalidDefaultMultislotValue[] =
    u"Invalid default value for a multislot, must be a multifield: %s";
inline constexpr char16_t SInvalidMultiSlotType[] =
    u"no types are allowed for multislots";
inline constexpr char16_t SInvalidExistingSlotChange[] =
    u"Invalid value for existing slot, slot is not multislot";
inline constexpr char16_t SInvalidExistingMultiSlotChange[] =
    u"Invalid value for existing slot, multislot is not slot";
inline constexpr char16_t SInvalidSlotQualifier[] =
    u"Invalid slot qualifier: %s";
inline constexpr char16_t SInvalidTestBinding[] =
    u"\"not\" and \"test\" CEs cannot be bound to variables";
inline constexpr char16_t SInvalidRuleFmt[] =
    u"Invalid Rule Format (%s): %s";
inline constexpr char16_t SInvalidSubstrParameters[] =
    u"Invalid substring parameters: %d, %d";
inline constexpr char16_t SInvalidMFParameters[] =
    u"Invalid multifield begin and end parameters: %d, %d";
inline constexpr char16_t SVerifyTypeComment[] =
    u"Returns TRUE if the argument is of the following type(s): %s.  If the argument is any other type, FALSE is returned";
inline constexpr char16_t SUnexpectedCharacters[] =
    u"\"%s\" contains unexpected character: \"%s\"";
inline constexpr char16_t SModuleMAINReserved[] =
    u"Module \"MAIN\" is reserved name and cannot be used for any other module";
inline constexpr char16_t SInvalidAgendaItem[] =
    u"Invalid object, agenda can only accept TActivation objects";
inline constexpr char16_t SExpectedEqGT[] =
    u"Expected \"=>\"";
inline constexpr char16_t SExpectedAtom[] =
    u"Expected \"( <atom>\"";
inline constexpr char16_t SExpectedValue[] =
    u"Expected value missing";
inline constexpr char16_t SExpectedChar[] =
    u"Expected \"%s\"";
inline constexpr char16_t SExpectedKeyword[] =
    u"Missing keyword.  Expected \"%s\"";
inline constexpr char16_t SNotMultiSlot[] =
    u"Slot \"%s\" is not a multislot";
inline constexpr char16_t SInvalidLowHiLimits[] =
    u"Invalid low and high limits specified: %.4f to %.4f";
inline constexpr char16_t SExpectedAssignment[] =
    u"Expected \"<-\"";
inline constexpr char16_t SExpectedIntVarFun[] =
    u"Expected integer, variable, or function call for %s";
inline constexpr char16_t SExpectedNumVarFun[] =
    u"Expected number, variable, or function call";
inline constexpr char16_t SExpectedRuleProperty[] =
    u"Expected rule property, salience, oneshot, or enabled";
inline constexpr char16_t SExpectedSalience[] =
    u"Expected \"salience\"";
inline constexpr char16_t SExpectedExtends[] =
    u"Expected \"(\", \"extends\", or \"is-a\"";
inline constexpr char16_t SExpectedDeffacts[] =
    u"Expected \"( deffacts\"";
inline constexpr char16_t SExpectedDefType[] =
    u"Expected \"( deftype\"";
inline constexpr char16_t SExpectedDefTemplate[] =
    u"Expected \"( deftemplate\"";
inline constexpr char16_t SExpectedDefModule[] =
    u"Expected \"( defmodule\"";
inline constexpr char16_t SExpectedDefRule[] =
    u"Expected \"( defrule\"";
inline constexpr char16_t SExpectedDefFunction[] =
    u"Expected \"( deffunction\"";
inline constexpr char16_t SExpectedFuzzySet[] =
    u"Expected \"( term\"";
inline constexpr char16_t SExpectedDefGlobal[] =
    u"Expected \"( defglobal\"";
inline constexpr char16_t SNestedNotCEs[] =
    u"Nested Not CEs not allowed yet";
inline constexpr char16_t SNoSuchSlot[] =
    u"No such slot in fact template: %s";
inline constexpr char16_t SAtomNotEquals[] =
    u"\"=\" cannot appear as an atom within a fact";
inline constexpr char16_t SNotCorrectType[] =
    u"Not a %s type.  Value (%s) is a %s type";
inline constexpr char16_t SNotAllowedValue[] =
    u"Not in allowed values";
inline constexpr char16_t SListCardinalityError[] =
    u"Multislot must have between %d and %d elements";
inline constexpr char16_t SOutOfRangeError[] =
    u"Range must be between %.4f and %.4f";
inline constexpr char16_t SNotCorrectSlotType[] =
    u"Slot %s does not contain a %s.  Value Type is %s";
inline constexpr char16_t SInvalidSlotValue[] =
    u"%s for %s slot";
inline constexpr char16_t SInvalidValueType[] =
    u"Value and type mismatch";
inline constexpr char16_t SInvalidValue[] =
    u"Value \"%s\" is not valid, %s";
inline constexpr char16_t SInvalidFuzzyValue[] =
    u"invalid fuzzy value";
inline constexpr char16_t STooFewArgs[] =
    u"Too few arguments for %s";
inline constexpr char16_t STooManyArgs[] =
    u"Too many arguments for %s";
inline constexpr char16_t SCorruptedToken[] =
    u"Corrupted Token, Negated Count is less than 0";
inline constexpr char16_t SCorruptedVariable[] =
    u"Corrupted Binding, variable not found: %s";
inline constexpr char16_t SInvalidModuleDependency[] =
    u"Invalid module dependency.  Module \"%s\" imports module \"%s\" which is later in the module list";
inline constexpr char16_t SImportedDefTypeExists[] =
    u"Module has existing imported defined dype: \"%s\"";
inline constexpr char16_t SImportedTemplateExists[] =
    u"Module has existing imported fact template: \"%s\"";
inline constexpr char16_t SDuplicateDefTypeNames[] =
    u"Defined Type Name already exists: \"%s\"";
inline constexpr char16_t SDuplicateFunctionNames[] =
    u"Function Name already exists: \"%s\"";
inline constexpr char16_t SDuplicateTemplateNames[] =
    u"Fact Template Name already exists: \"%s\"";
inline constexpr char16_t SDuplicateModuleNames[] =
    u"Module Name already exists: \"%s\"";
inline constexpr char16_t SDuplicateRuleNames[] =
    u"Duplicate Rules defined with same name: \"%s\"";
inline constexpr char16_t SDuplicateStreamNames[] =
    u"Duplicate streams defined with same name: \"%s\"";
inline constexpr char16_t SInvalidFunctionAdd[] =
    u"Cannot add nil to user functions";
inline constexpr char16_t SInvalidPatternBinding[] =
    u"Cannot bind a negated pattern to a variable";
inline constexpr char16_t SInvalidAddObject[] =
    u"Invalid object being added: \"%s\" instead of \"%s\"";
inline constexpr char16_t SInvalidArgType[] =
    u"Invalid argument type for deffunction: \"%s\".  Expected %s";
inline constexpr char16_t SInvalidSlotName[] =
    u"No such slot name: \"%s\"";
inline constexpr char16_t SInvalidSlotType[] =
    u"Invalid slot type: %s";
inline constexpr char16_t SInvalidModulekeyword[] =
    u"Invalid defmodule keyword: \"%s\"";
inline constexpr char16_t SUnsharedFactTemplateType[] =
    u"Fact Template, \"%s\", depends on non-imported Defined Type: \"%s\"";
inline constexpr char16_t SMissingModuleExportID[] =
    u"Missing module export keyword (?ALL, ?NONE, deftype, or deftemplate): \"%s\"";
inline constexpr char16_t SBadNameList[] =
    u"Invalid name in defmodule name list: \"%s\"";
inline constexpr char16_t SModuleNotExist[] =
    u"Module does not exist: \"%s\"";
inline constexpr char16_t SInvalidCallType[] =
    u"Invalid Call Type: %s";
inline constexpr char16_t SInvalidTokenAction[] =
    u"Invalid Token Action";
inline constexpr char16_t SInvalidTokenHint[] =
    u"Invalid Token hint for parsing token: %s";
inline constexpr char16_t SInvalidStreamName[] =
    u"Invalid stream name: %s";
inline constexpr char16_t SInvalidPtr[] =
    u"Invalid destruction of pointer reference, reference counting greater than 0";
inline constexpr char16_t SUnknownName[] =
    u"Unknown %s name: %s";
inline constexpr char16_t SUnknownFactTemplate[] =
    u"Unknown fact template: %s";
inline constexpr char16_t SUnknownValueInterface[] =
    u"Unknown interface supplied to TAVO value";
inline constexpr char16_t SFactTemplatesDifferent[] =
    u"Unable to assign slot values, fact templates are different: %s and %s";
inline constexpr char16_t SMissingName[] =
    u"Missing name";
inline constexpr char16_t SMissingModuleSeparator[] =
    u"Missing module separator \"::\"";
inline constexpr char16_t SMissingTemplateName[] =
    u"Missing Fact Template name";
inline constexpr char16_t SMissingDeffactsName[] =
    u"Missing Fact Set name";
inline constexpr char16_t SMissingParentTemplateName[] =
    u"Missing name of parent template to extend";
inline constexpr char16_t SMissingIsaTypeName[] =
    u"Missing name of type for fact template";
inline constexpr char16_t SUnknownTypeName[] =
    u"type name unknown or invalid: %s";
inline constexpr char16_t SMissingParentDefinedTypeName[] =
    u"Missing name of parent defined type to extend";
inline constexpr char16_t SMissingThen[] =
    u"Missing \"then\" in an IF statement";
inline constexpr char16_t SMultifieldLengthMismatch[] =
    u"Invalid multifield arguments, the two multifields must be of the same length";
inline constexpr char16_t SNoSuchFact[] =
    u"No Such Fact with ID=%s exists";
inline constexpr char16_t SNoSuchModule[] =
    u"No such module with name=%s exists";
inline constexpr char16_t SNoSuchFunction[] =
    u"Function is unimplemented or unassigned: %s";
inline constexpr char16_t SNoReadFunctionWarning[] =
    u"The %s event has not been implemented or unassigned.\r\nWarning: Implementation of this function requires a blocking mechanism, \r\nsuch as ShowModal, or the use of threads";
inline constexpr char16_t SRuleMissingForPattern[] =
    u"Rule missing for pattern";
inline constexpr char16_t SNoTemplate[] =
    u"Fact Template is missing";
inline constexpr char16_t SNoRule[] =
    u"No Rule exists with name: %s";
inline constexpr char16_t SMissingRule[] =
    u"Missing Rule cannot be edited";
inline constexpr char16_t SSyntaxError[] =
    u"Syntax Error: %s";
inline constexpr char16_t SCannotChangeID[] =
    u"Illegal Attempt to change Fact Id";
inline constexpr char16_t SExpectedParenConstVar[] =
    u"Unexpected symbol, expected a \"(\", constant, or global variable: %s";
inline constexpr char16_t SUnknownEngine[] =
    u"Unknown/Undefined Inference Engine";
inline constexpr char16_t SMissingFactSet[] =
    u"Empty fact set property";
inline constexpr char16_t SUnknownVariable[] =
    u"Unknown variable name: %s";
inline constexpr char16_t SEncodingProblem[] =
    u"Invalid variable name, %s.  Possible encoding error";
inline constexpr char16_t SUnknownTavoClassName[] =
    u"Unknown class name: %s";
inline constexpr char16_t SUnexpectedCharacter[] =
    u"Unexpected character found: \"%s\"";
inline constexpr char16_t SUnexpectedEOF[] =
    u"Unexpected end of stream";
inline constexpr char16_t SWrongFunctionName[] =
    u"Function names do not match: %s and %s";
inline constexpr char16_t SNegatedVariable[] =
    u"First Use of Variable is negated, variable name is %s";
inline constexpr char16_t SParseError[] =
    u"Parsing Error, %s in %s at line %s: %s";
inline constexpr char16_t SNoParser[] =
    u"No parser specified";
inline constexpr char16_t SMultipleParseError[] =
    u"Errors parsing stream:\r\n%s";
inline constexpr char16_t SParseTypeError[] =
    u"Unable to parse strings of %s at this time";
inline constexpr char16_t SBackChainCE[] =
    u"Cannot backchain on special CEs: %s";
inline constexpr char16_t SBackChainFuncallPatterns[] =
    u"Cannot use Function calls in backchained patterns: %s";
inline constexpr char16_t SNoSuchConstraint[] =
    u"Defined Type %s does not have %s constraints";
inline constexpr char16_t SInvalidConstraint[] =
    u"Defined Type %s cannot contain %s constraint types";
inline constexpr char16_t SUncloneableValue[] =
    u"Uncloneable value.  Value owned an object of &s class type";
inline constexpr char16_t SEmptyBaseTypes[] =
    u"Empty base type for defined type not allowed";
inline constexpr char16_t SCannotMixFuzzy[] =
    u"Cannot mix fuzzy type with other primitive types";
inline constexpr char16_t SMissingRange[] =
    u"Missing range statement";
inline constexpr char16_t SMissingFuzzySetValues[] =
    u"Missing fuzzy set \"values\" statement";
inline constexpr char16_t SMissingAllowedEnumeration[] =
    u"Expected allowed value argument for deftype, received %s";
inline constexpr char16_t STypeInheritanceLoop[] =
    u"Type inheritance loop detected, %s type cannot be an ancestor of itself";
inline constexpr char16_t SNoMultiTypeInheritance[] =
    u"Multiple inheritance is not allowed for deftypes";
inline constexpr char16_t SFactTemplateInheritanceCorrupt[] =
    u"Fact templates inheritance structure corrupted";
inline constexpr char16_t SDBTypeMismatch[] =
    u"Defined type not valid for database field of type: %s";
inline constexpr char16_t SDBMultiSlotNotString[] =
    u"Fields that are Multislots must be of type string";
inline constexpr char16_t STypeInheritanceCorrupt[] =
    u"Defined types inheritance structure corrupted";
inline constexpr char16_t SMissingFuzzyOperand[] =
    u"Missing fuzzy operand to be modified by hedge: %s";
inline constexpr char16_t SInvalidFuzzyToken[] =
    u"Invalid item in fuzzy expression: %s";
inline constexpr char16_t SNeedFuzzyType[] =
    u"Fuzzy Type Definition needed to parse value";
inline constexpr char16_t SDifferentFuzzyVariables[] =
    u"Fuzzy variables are different, %s is a term from %s and %s is a term from %s";
inline constexpr char16_t SInvalidFuzzyUnionTemplate[] =
    u"Cannot union two facts with different fact templates: %s and %s";
inline constexpr char16_t SNotFuzzyFact[] =
    u"Fact is not a fuzzy fact";
inline constexpr char16_t SInvalidFuzzyCorrelation[] =
    u"Invalid Fuzzy Correlation specified (%s), expected %s";
inline constexpr char16_t SInvalidFuzzyInference[] =
    u"Invalid Fuzzy Inference specified (%s), expected %s";
inline constexpr char16_t SInvalidTavoFuzzyOperation[] =
    u"Invalid Fuzzy operation specified (%s) for %s, expected %s";
inline constexpr char16_t SInvalidFuzzyExpression[] =
    u"Invalid Fuzzy Expression: %s";
inline constexpr char16_t SUndefinedFuzzyVariable[] =
    u"fuzzy variable is not defined";
inline constexpr char16_t SFuzzyDefinitionError[] =
    u"Invalid attempt to modify fuzzy type in fact template slot, fuzzy types cannot be modified";
inline constexpr char16_t SPatternMatchError[] =
    u" for pattern match = ";
inline constexpr char16_t SInitModuleAgain[] =
    u"Module has already been initialized";

}  // namespace tavo

namespace tavo {

// Messages of guards that keep bad input finite.
inline constexpr char16_t SNestingTooDeep[] = u"Expression nested more than %d levels deep";
inline constexpr char16_t SRecursionTooDeep[] = u"Function calls nested more than %d levels deep: %s";
inline constexpr char16_t SStackExhausted[] =
    u"Function calls nested too deeply: the stack ran out after %d levels of deffunction calls in %s";

// Messages of the date and time functions.
inline constexpr char16_t SInvalidDateTimeText[] = u"Invalid %s text, expected %s: \"%s\"";
inline constexpr char16_t SInvalidDate[] = u"Invalid date: year %d, month %d, day %d";
inline constexpr char16_t SInvalidTime[] = u"Invalid time: hour %d, minute %d, second %d, millisecond %d";
inline constexpr char16_t SDateTimeOutOfRange[] =
    u"Date-time number out of range, the years run from 1 to 9999: %g";

// Traps of floating-point arithmetic in the numeric functions, with the
// function's name.
inline constexpr char16_t SFloatInvalidOperation[] = u"Invalid floating point operation in %s";
inline constexpr char16_t SFloatDivisionByZero[] = u"Floating point division by zero in %s";
inline constexpr char16_t SFloatOverflow[] = u"Floating point overflow in %s";

// Freeing the engine that runs the call, a part of it or an owner of it
// would pull the ground from under the rule.
inline constexpr char16_t SFreeEngineObject[] =
    u"Cannot free %s, which is the running engine, a part of it or an owner of it";

// Messages of the financial routines.
inline constexpr char16_t SInvalidPaymentTime[] =
    u"Invalid payment time \"%s\", expected ptEndOfPeriod or ptStartOfPeriod";
inline constexpr char16_t SPaymentTimeOutOfRange[] = u"Payment time out of range: %d";
inline constexpr char16_t SInvalidRate[] = u"Invalid rate %g, a rate must be above -1";
inline constexpr char16_t SInvalidAssetLife[] = u"Invalid life %d, an asset's life is at least 1 period";
inline constexpr char16_t SPeriodOutOfRange[] = u"Period %d is outside 1 to %d";
inline constexpr char16_t SNoSignChange[] =
    u"Cash flows without both a positive and a negative amount have no internal rate of return";
inline constexpr char16_t SNoConvergence[] = u"%s found no solution within %d iterations";

}  // namespace tavo

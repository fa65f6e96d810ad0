/// @file
/// CSMILTimingAttr: begin, end and duration of the elements that have them.  [W3C SMIL 2.0, Timing]
#ifndef MMSBRIX_SMIL_SMILTIMING_H
#define MMSBRIX_SMIL_SMILTIMING_H

#include "../export.h"
#include "smilnode.h"

/// Timing attributes over whatever keeps the attributes.  Times are stored in milliseconds,
/// "1500ms". A getter gives the number that the value begins with and does not interpret a unit:
/// "2s" reads as 2; 0 when absent.  A putter given 0 removes the attribute.
class MMSBRIX_API CSMILTimingAttr {
 public:
  ///@{
  /// As CSMILNode has them; whoever keeps the attributes defines them.
  virtual void AddAttribute(CSMILAttr* attr) = 0;
  virtual CSMILAttr* FindAttribute(const char* name) = 0;
  virtual bool RemoveAttribute(const char* name) = 0;
  ///@}

  ///@{
  /// When the element begins, counted from where its parent does.
  int GetBegin() { return timeOf("begin"); }
  void PutBegin(int milliseconds) { putTime("begin", milliseconds); }
  ///@}
  ///@{
  /// When it ends, counted likewise.
  int GetEnd() { return timeOf("end"); }
  void PutEnd(int milliseconds) { putTime("end", milliseconds); }
  ///@}
  ///@{
  /// How long it is shown.
  int GetDur() { return timeOf("dur"); }
  void PutDur(int milliseconds) { putTime("dur", milliseconds); }
  ///@}

 protected:
  ///@{
  /// Part of a class that keeps attributes, never an object by itself.
  CSMILTimingAttr() = default;
  CSMILTimingAttr(const CSMILTimingAttr& other) = default;
  CSMILTimingAttr& operator=(const CSMILTimingAttr& other) = default;
  ~CSMILTimingAttr() = default;
  ///@}

 private:
  int timeOf(const char* name);
  void putTime(const char* name, int milliseconds);
};

#endif  // MMSBRIX_SMIL_SMILTIMING_H

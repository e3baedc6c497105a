#pragma once

#include <QOpenGLFunctions>

#include <memory>

class QOpenGLContextGroup;

namespace orvelle {

/// The shader program that draws a planar 4:2:0 picture; its samplers read texture units 0 to 2.
///
/// Views whose contexts share their objects share one, since a software renderer takes more than
/// a megabyte for each. The matrix belongs to the program, so whoever draws sets it first.
/// Interface thread; the last owner lets go of it while a context of the group is current.
class PictureProgram {
public:
    /// That of the current context's group, built on first need.
    static std::shared_ptr<PictureProgram> ofCurrentContext();

    explicit PictureProgram(QOpenGLContextGroup* group);
    ~PictureProgram();
    PictureProgram(const PictureProgram&) = delete;
    PictureProgram& operator=(const PictureProgram&) = delete;

    GLuint id() const { return m_id; }
    bool isUsable() const { return m_vertexAttribute >= 0 && m_textureAttribute >= 0; }
    GLuint vertexAttribute() const { return static_cast<GLuint>(m_vertexAttribute); }
    GLuint textureAttribute() const { return static_cast<GLuint>(m_textureAttribute); }
    GLint matrixUniform() const { return m_matrixUniform; }

private:
    void build(QOpenGLFunctions& gl);

    QOpenGLContextGroup* const m_group;
    GLuint m_id = 0;
    GLint m_vertexAttribute = -1;
    GLint m_textureAttribute = -1;
    GLint m_matrixUniform = -1;
};

}  // namespace orvelle

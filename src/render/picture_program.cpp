#include "render/picture_program.h"

#include <QLoggingCategory>
#include <QOpenGLContext>

#include <map>

namespace orvelle {
namespace {

Q_LOGGING_CATEGORY(lcRender, "orvelle.render")

constexpr char kVertexShader[] =
    "attribute vec4 vertexIn; attribute vec2 textureIn; varying vec2 textureOut; void main(void) { "
    "gl_Position = vertexIn; textureOut = textureIn; }";

constexpr char kFragmentShader[] =
    "varying vec2 textureOut; uniform sampler2D textureY; uniform sampler2D textureU; uniform "
    "sampler2D textureV; uniform mat3 colorConversionMatrix; void main(void){ vec3 yuv; vec3 rgb; "
    "yuv.x = texture2D(textureY, textureOut).r; yuv.y = texture2D(textureU, textureOut).r - 0.5; "
    "yuv.z = texture2D(textureV, textureOut).r - 0.5; rgb = colorConversionMatrix * yuv; "
    "gl_FragColor = vec4(rgb, 1); }";

// OpenGL ES has no default precision for fragments.
constexpr char kEmbeddedPrecision[] = "precision mediump float; ";

std::map<QOpenGLContextGroup*, std::weak_ptr<PictureProgram>>& programs() {
    static std::map<QOpenGLContextGroup*, std::weak_ptr<PictureProgram>> s_programs;
    return s_programs;
}

GLuint compileShader(QOpenGLFunctions& gl, GLenum type, const char* source) {
    const bool needsPrecision =
        type == GL_FRAGMENT_SHADER && QOpenGLContext::currentContext()->isOpenGLES();
    const char* sources[] = {needsPrecision ? kEmbeddedPrecision : "", source};
    const GLuint shader = gl.glCreateShader(type);
    gl.glShaderSource(shader, 2, sources, nullptr);
    gl.glCompileShader(shader);
    return shader;
}

}  // namespace

std::shared_ptr<PictureProgram> PictureProgram::ofCurrentContext() {
    QOpenGLContextGroup* const group = QOpenGLContext::currentContext()->shareGroup();
    std::weak_ptr<PictureProgram>& known = programs()[group];
    std::shared_ptr<PictureProgram> program = known.lock();
    if (!program) {
        program = std::make_shared<PictureProgram>(group);
        known = program;
    }
    return program;
}

PictureProgram::PictureProgram(QOpenGLContextGroup* group) : m_group(group) {
    build(*QOpenGLContext::currentContext()->functions());
}

PictureProgram::~PictureProgram() {
    programs().erase(m_group);
    if (QOpenGLContext* context = QOpenGLContext::currentContext())
        context->functions()->glDeleteProgram(m_id);
}

void PictureProgram::build(QOpenGLFunctions& gl) {
    const GLuint vertexShader = compileShader(gl, GL_VERTEX_SHADER, kVertexShader);
    const GLuint fragmentShader = compileShader(gl, GL_FRAGMENT_SHADER, kFragmentShader);
    m_id = gl.glCreateProgram();
    gl.glAttachShader(m_id, vertexShader);
    gl.glAttachShader(m_id, fragmentShader);
    gl.glLinkProgram(m_id);
    gl.glDeleteShader(vertexShader);
    gl.glDeleteShader(fragmentShader);
    GLint isLinked = GL_FALSE;
    gl.glGetProgramiv(m_id, GL_LINK_STATUS, &isLinked);
    if (!isLinked)
        qCWarning(lcRender, "the picture's shader program does not link; pictures stay black");

    gl.glUseProgram(m_id);
    gl.glUniform1i(gl.glGetUniformLocation(m_id, "textureY"), 0);
    gl.glUniform1i(gl.glGetUniformLocation(m_id, "textureU"), 1);
    gl.glUniform1i(gl.glGetUniformLocation(m_id, "textureV"), 2);
    m_vertexAttribute = gl.glGetAttribLocation(m_id, "vertexIn");
    m_textureAttribute = gl.glGetAttribLocation(m_id, "textureIn");
    m_matrixUniform = gl.glGetUniformLocation(m_id, "colorConversionMatrix");
}

}  // namespace orvelle
